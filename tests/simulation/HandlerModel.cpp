#include "simulation/HandlerModel.h"

#include <algorithm>
#include <utility>

#include "model/Json.h"
#include "support/TableOrder.h"

namespace SettingsSimulation {

namespace {

using SettingsHandlerFuzz::arrayElements;
using SettingsHandlerFuzz::arrayText;

constexpr std::size_t longestKey = 256;
constexpr std::size_t mostBytes = 1024UL * 1024UL;
constexpr std::size_t mostKeys = 1000;

/// Modes of the device: where it keeps them, and the settings that they are.
const std::vector<std::pair<std::string, std::string>>& modes() {
    static const std::vector<std::pair<std::string, std::string>> all{
        {"currentHandsFreeStatus", "handsFreeEnabled"},
        {"currentAlwaysOnVoiceMode", "handsFreeAlwaysOnEnabled"},
        {"currentAlwaysOnPTTMode", "pttAlwaysOnEnabled"},
    };
    return all;
}

std::string word(bool value) {
    return value ? "true" : "false";
}

std::string valueOr(const std::map<std::string, std::string>& values, const std::string& key,
                    const std::string& otherwise) {
    const auto found = values.find(key);
    return found == values.end() ? otherwise : found->second;
}

}  // namespace

HandlerModel::HandlerModel() : ReferenceModel(SettingsHandlerFuzz::keysInTableOrder()) {}

void HandlerModel::start(const Durable& onDisk) {
    disk = onDisk;
    refusedWrites.clear();
    beforeTransaction.reset();
    faults.clear();
    launched = false;
    begin({}, false, false);
    forgetTimestamps();
    readState();
    initializeSettings();
}

void HandlerModel::begin(const DiskFate& fateOfDisk, bool keepsAllSteps, bool mayLeaveGhosts) {
    fate = fateOfDisk;
    keepsSteps = keepsAllSteps;
    leavesGhosts = mayLeaveGhosts;
    uses = 0;
    changes = 0;
    storageWorks = false;
    hasTransaction = false;
    durableSteps.clear();
}

void HandlerModel::addGhosts(const std::vector<Durable>& more) {
    for (const auto& ghost : more) {
        if (std::find(refusedWrites.begin(), refusedWrites.end(), ghost) == refusedWrites.end()) {
            refusedWrites.push_back(ghost);
        }
    }
}

std::string HandlerModel::faultValue(const std::string& fault) const {
    return valueOr(faults, fault, "");
}

long HandlerModel::faultTime(const std::string& fault) const {
    const auto found = faults.find(fault);
    return found == faults.end() ? 0 : std::stol(found->second);
}

bool HandlerModel::readsDisk(bool isOfSettings) {
    const bool works = !fate.fails(uses++, isOfSettings);
    isBroken = isBroken || !works;
    isEnded = isEnded || (!works && fate.endsTransaction);
    return works;
}

bool HandlerModel::writesDisk() {
    return !fate.fails(uses++, false) && !isOn("storage-full") && !isOn("storage-failing");
}

void HandlerModel::changedDisk() {
    refusedWrites.clear();
    ++changes;
    if (keepsSteps) {
        durableSteps.push_back(disk);
    }
}

bool HandlerModel::put(std::map<std::string, std::string> Durable::*table, const std::string& key,
                       const std::string& value) {
    const auto old = (disk.*table).find(key);
    if (old != (disk.*table).end() && old->second == value) {
        // SQLite writes no page that stays the same.
        return readsDisk(table == &Durable::settings);
    }
    if (beforeTransaction && isEnded) {
        return false;
    }
    if (beforeTransaction) {
        const bool works = readsDisk(table == &Durable::settings);
        if (works) {
            (disk.*table)[key] = value;
            isDirty = true;
        }
        return works;
    }
    const bool works = writesDisk();
    if (works) {
        (disk.*table)[key] = value;
        changedDisk();
    } else if (leavesGhosts) {
        refusedWrites.push_back(disk);
        (refusedWrites.back().*table)[key] = value;
    }
    return works;
}

void HandlerModel::beginTransaction() {
    beforeTransaction = disk;
    isDirty = false;
    isBroken = false;
    isEnded = false;
    hasTransaction = true;
}

bool HandlerModel::commit() {
    Durable before = std::move(*beforeTransaction);
    beforeTransaction.reset();
    const bool works = !isEnded && (isDirty ? writesDisk() : !isBroken || readsDisk());
    if (works && isDirty) {
        changedDisk();
    } else if (!works) {
        if (leavesGhosts) {
            refusedWrites.push_back(disk);
        }
        disk = std::move(before);
    }
    return works;
}

// Owners

std::string HandlerModel::storedValue(const std::string& key) {
    const bool works = readsDisk(true);
    storageWorks = storageWorks || works;
    return works ? valueOr(disk.settings, key, "") : "";
}

bool HandlerModel::isRefused(const std::string& key) const {
    return key.size() > longestKey;
}

bool HandlerModel::storeValue(const std::string& key, const std::string& value) {
    if (isRefused(key)) {
        return false;
    }
    const auto old = disk.settings.find(key);
    const std::size_t oldBytes = old == disk.settings.end() ? 0 : key.size() + old->second.size();
    if (key.size() + value.size() > oldBytes) {
        std::size_t bytes = key.size() + value.size() - oldBytes;
        for (const auto& [each, its] : disk.settings) {
            bytes += each.size() + its.size();
        }
        if (bytes > mostBytes || (oldBytes == 0 && disk.settings.size() >= mostKeys)) {
            return false;
        }
    }
    const bool works = put(&Durable::settings, key, value);
    storageWorks = storageWorks || (works && !beforeTransaction);
    return works;
}

bool HandlerModel::clearStorage() {
    if (!writesDisk()) {
        if (leavesGhosts) {
            refusedWrites.push_back({{}, disk.simulation});
        }
        return false;
    }
    storageWorks = true;
    const auto removed = std::exchange(disk.settings, {});
    changedDisk();
    for (const auto& entry : removed) {
        valueChanged(entry.first);
    }
    return true;
}

std::string HandlerModel::deviceMode(const std::string& infoKey) {
    return word(around.deviceInfo.at(infoKey) == "on");
}

bool HandlerModel::setMode(const std::string& infoKey, bool enabled) {
    const std::string wanted = enabled ? "on" : "off";
    std::string& current = around.deviceInfo[infoKey];
    if (current == wanted) {
        return true;
    }
    if (!put(&Durable::simulation, infoKey, wanted)) {
        return false;
    }
    current = wanted;
    for (const auto& [place, key] : modes()) {
        if (place == infoKey) {
            valueChanged(key);
        }
    }
    return true;
}

bool HandlerModel::applyFriendlyName(const std::string& name) {
    if (storedValue("friendlyName") == name) {
        return true;
    }
    if (!storeValue("friendlyName", name)) {
        return false;
    }
    valueChanged("friendlyName");
    return true;
}

bool HandlerModel::applySetting(const std::string& key, const std::string& value) {
    if (faultValue("sdk-refuses") == key) {
        return false;
    }
    if (key == "friendlyName") {
        return applyFriendlyName(value);
    }
    return setMode(key == "handsFreeAlwaysOnEnabled" ? "currentAlwaysOnVoiceMode" : "currentAlwaysOnPTTMode",
                   value == "true");
}

void HandlerModel::switchHandsFree(bool enabled) {
    if (faultValue("sdk-refuses") != "handsFreeEnabled") {
        setMode("currentHandsFreeStatus", enabled);
    }
}

bool HandlerModel::saveLocales(const std::vector<std::string>& locales) {
    const std::string text = arrayText(locales);
    if (locales == around.locales) {
        return true;
    }
    if (!put(&Durable::simulation, "orliaLocale", text)) {
        return false;
    }
    around.locales = locales;
    valueChanged("orliaLocale");
    return true;
}

bool HandlerModel::saveTimezone(const std::string& timezone) {
    if (timezone == around.timezone) {
        return true;
    }
    if (!put(&Durable::simulation, "timezone", timezone)) {
        return false;
    }
    around.timezone = timezone;
    valueChanged("timezone");
    return true;
}

void HandlerModel::useLocales(const std::vector<std::string>& locales) {
    if (faultValue("sdk-refuses") != "orliaLocale") {
        saveLocales(locales);
    }
}

void HandlerModel::useTimezone(const std::string& timezone) {
    if (faultValue("sdk-refuses") != "timezone") {
        saveTimezone(timezone);
    }
}

bool HandlerModel::useCaptions(bool enabled) {
    if (around.captionsEnabled == enabled) {
        return true;
    }
    if (!put(&Durable::simulation, "captionsEnabled", word(enabled))) {
        return false;
    }
    around.captionsEnabled = enabled;
    valueChanged("captionsEnabled");
    return true;
}

bool HandlerModel::useDoNotDisturb(bool enabled) {
    if (around.doNotDisturbEnabled == enabled) {
        return true;
    }
    if (!put(&Durable::simulation, "doNotDisturbEnabled", word(enabled))) {
        return false;
    }
    around.doNotDisturbEnabled = enabled;
    valueChanged("doNotDisturbEnabled");
    return true;
}

bool HandlerModel::changeByItself(const std::string& key) {
    if (key == "orliaLocale") {
        const std::vector<std::string> french{"fr-FR"};
        return saveLocales(around.locales == french ? std::vector<std::string>{"en-US"} : french);
    }
    if (key == "timezone") {
        return saveTimezone(around.timezone == "Europe/Paris" ? "America/Vancouver" : "Europe/Paris");
    }
    if (key == "captionsEnabled") {
        return useCaptions(!around.captionsEnabled);
    }
    if (key == "doNotDisturbEnabled") {
        return useDoNotDisturb(!around.doNotDisturbEnabled);
    }
    if (key == "friendlyName") {
        return applyFriendlyName(storedValue(key) == "Voice SDK" ? "TV" : "Voice SDK");
    }
    for (const auto& [place, mode] : modes()) {
        if (mode == key) {
            return setMode(place, around.deviceInfo.at(place) != "on");
        }
    }
    return false;
}

void HandlerModel::readState() {
    const auto& state = disk.simulation;
    around.locales.clear();
    const auto locales = arrayElements(valueOr(state, "orliaLocale", R"(["en-US"])"));
    for (const auto& each : *locales) {
        around.locales.push_back(*each);
    }
    around.timezone = valueOr(state, "timezone", "America/Vancouver");
    around.captionsEnabled = valueOr(state, "captionsEnabled", "false") == "true";
    around.doNotDisturbEnabled = valueOr(state, "doNotDisturbEnabled", "false") == "true";
    for (const auto& mode : modes()) {
        around.deviceInfo[mode.first] = valueOr(state, mode.first, "off");
    }
}

}  // namespace SettingsSimulation
