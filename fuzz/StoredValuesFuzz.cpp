// The whole host starts with a database of any values, also those of older software: it logs, migrates, sets aside and
// keeps exactly what the model predicts.

#include <fuzzer/FuzzedDataProvider.h>

#include "Composition.h"
#include "SettingsHandlerKit/Logging.h"
#include "model/Json.h"
#include "storage/KeyValueTable.h"
#include "support/Check.h"
#include "support/FastFolder.h"
#include "support/HostSide.h"
#include "support/Input.h"
#include "support/TableOrder.h"

namespace {

using namespace SettingsHandlerFuzz;
using namespace SettingsHost;
using namespace SettingsHandlerKit;

using Values = std::map<std::string, std::string>;

constexpr int maximumValues = 8;
const std::string localeKey = "orliaLocale";

const std::vector<std::string> keys{localeKey,
                                    "timezone",
                                    "orliaLocale.unusable",
                                    "orliaLocale.unusable.2",
                                    "deviceName",
                                    "friendlyName",
                                    "captionsEnabled",
                                    "doNotDisturbEnabled",
                                    "handsFreeEnabled",
                                    "companionDevice",
                                    "currentHandsFreeStatus",
                                    "currentAlwaysOnVoiceMode",
                                    "currentAlwaysOnPTTMode",
                                    "tovanEntitlementStatus"};

Values valuesFrom(FuzzedDataProvider& input) {
    Values values;
    for (auto count = input.ConsumeIntegralInRange<int>(0, maximumValues); count > 0; --count) {
        const auto index = input.ConsumeIntegralInRange<std::size_t>(0, keys.size());
        const std::string key = index < keys.size() ? keys[index] : input.ConsumeRandomLengthString(16);
        values[key] = input.ConsumeRandomLengthString(256);
    }
    return values;
}

void plant(Database& database, const std::string& tableName, const Values& values) {
    KeyValueTable table(database, tableName);
    for (const auto& [key, value] : values) {
        table.put(key, value);
    }
}

Entries linesOf(const Values& values) {
    Entries lines;
    for (const auto& [key, value] : values) {
        lines.push_back(key + " = " + value);
    }
    return lines;
}

Entries contentOf(Database& database, const std::string& tableName) {
    KeyValueTable table(database, tableName);
    Values values;
    for (const auto& key : table.keys()) {
        values[key] = table.get(key).value_or("(none)");
    }
    return linesOf(values);
}

/// The strings of an array that an SDK saved; none when the text is something else.
std::vector<std::string> savedLocales(const std::string& text) {
    std::vector<std::string> locales;
    if (Envelope(text).isArray()) {
        const auto elements = arrayElements(text);
        for (const auto& element : *elements) {
            if (element) {
                locales.push_back(*element);
            }
        }
    }
    return locales;
}

std::string valueOr(const Values& values, const std::string& key, const std::string& otherwise) {
    const auto entry = values.find(key);
    return entry == values.end() ? otherwise : entry->second;
}

ReferenceModel modelOf(const Values& settings, const Values& simulation) {
    ReferenceModel model(keysInTableOrder());
    model.around.stored = settings;
    model.around.deviceInfo = simulation;
    model.around.locales = savedLocales(valueOr(simulation, localeKey, R"(["en-US"])"));
    model.around.timezone = valueOr(simulation, "timezone", "America/Vancouver");
    model.around.captionsEnabled = valueOr(simulation, "captionsEnabled", "false") == "true";
    model.around.doNotDisturbEnabled = valueOr(simulation, "doNotDisturbEnabled", "false") == "true";
    return model;
}

/// The key under which an unusable stored locale is set aside; empty when it is usable.
std::string setAside(Values& stored) {
    const std::string value = valueOr(stored, localeKey, "[");
    const Envelope json(value);
    if (!json.isJson() || (json.isArray() && json.nesting() <= 32)) {
        return "";
    }
    std::string key = localeKey + ".unusable";
    for (int number = 2; stored.count(key) > 0; ++number) {
        key = localeKey + ".unusable." + std::to_string(number);
    }
    stored[key] = value;
    stored.erase(localeKey);
    return key;
}

Entries expectedLines(ReferenceModel& model, const std::string& aside) {
    Entries lines;
    const auto take = [&] {
        for (const auto& entry : model.take()) {
            if (entry.rfind("log ", 0) == 0) {
                lines.push_back(entry);
            }
        }
    };
    lines.emplace_back("log 0 SettingsHandler:Initialized Settings Handler");
    if (!aside.empty()) {
        lines.push_back("log 3 " + SettingsHandlerKit::programName() +
                        ":rejected stored orliaLocale: must be a JSON array of at most 32 levels; moved to '" + aside +
                        "'");
    }
    model.initializeSettings();
    take();
    model.migrateExistingDeviceSettings();
    take();
    return lines;
}

Entries linesOfStart(const FastFolder& folder) {
    SettingsHandlerTesting::Journal journal;
    const LogToJournal log(journal);
    Options options;
    options.storageFile = folder / "database";
    options.socketPath = folder / "settings.sock";
    options.deviceSocketPath = folder / "device.sock";
    // A sandbox would apply to all later runs and to the fuzzer.
    options.sandbox = false;
    const Composition host(options, PassedSockets(), std::make_shared<RequestContext>(), nullptr);
    return journal.take();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static FastFolder folder;
    folder.clear();
    FuzzedDataProvider input(data, size);
    const Values settings = valuesFrom(input);
    const Values simulation = valuesFrom(input);
    {
        Database database(folder / "database", std::make_shared<Disk>());
        plant(database, "settings", settings);
        plant(database, "simulation", simulation);
    }

    ReferenceModel model = modelOf(settings, simulation);
    const auto localesBefore = model.around.locales;
    const std::string timezoneBefore = model.around.timezone;
    Values withoutUnusable = settings;
    const std::string aside = setAside(withoutUnusable);
    model.around.stored = withoutUnusable;
    checkSame(linesOfStart(folder), expectedLines(model, aside), "the lines of the start");

    Values expectedSimulation = simulation;
    if (model.around.locales != localesBefore) {
        expectedSimulation[localeKey] = arrayText(model.around.locales);
    }
    if (model.around.timezone != timezoneBefore) {
        expectedSimulation["timezone"] = model.around.timezone;
    }
    Database database(folder / "database", std::make_shared<Disk>());
    checkSame(contentOf(database, "settings"), linesOf(model.around.stored), "what is stored after the start");
    checkSame(contentOf(database, "simulation"), linesOf(expectedSimulation), "what the device saved at the start");
    return 0;
}
