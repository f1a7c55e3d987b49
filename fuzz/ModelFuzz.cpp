// Sequences of all operations of the handler, compared with the reference model after each operation.

#include <functional>

#include <fuzzer/FuzzedDataProvider.h>

#include "Wire/Catalogue.h"
#include "handler/LocaleGuard.h"
#include "model/Json.h"
#include "support/Check.h"
#include "support/Guarded.h"
#include "support/HandlerWorld.h"
#include "support/Input.h"

namespace {

using namespace SettingsHandlerFuzz;

constexpr int maximumOperations = 60;

/// The kept inputs depend on the order.
const std::vector<std::string> keys = [] {
    std::vector<std::string> names;
    for (const auto& setting : Wire::catalogue()) {
        names.push_back(setting.key);
    }
    names.insert(names.end(), {"unknown", "another", ""});
    return names;
}();

const std::vector<std::string> values{"true",
                                      "false",
                                      "",
                                      "TRUE",
                                      "Den",
                                      "TV",
                                      "[\"en-US\"]",
                                      "[]",
                                      "[\"fr-FR\", \"en-US\"]",
                                      "[\"\"]",
                                      "[1,\"de-DE\"",
                                      "Europe/Paris",
                                      "America/Vancouver",
                                      "on",
                                      "%s%n"};

const std::string rejection = "rejected orliaLocale: must be a JSON array of at most 32 levels";

/// Draws operations from the input and runs them on both.
class Sequence {
public:
    Sequence(const std::uint8_t* data, std::size_t size)
        : input(data, size), world(recorder(), surroundingsFrom(input.ConsumeIntegral<std::uint8_t>())) {
        world.makeObservers();
    }

    void run() {
        for (int count = 0; count < maximumOperations && input.remaining_bytes() > 0; ++count) {
            const auto index = input.ConsumeIntegralInRange<std::size_t>(0, operations().size() - 1);
            const auto& [name, operation] = operations()[index];
            (this->*operation)();
            world.expectSame(name);
            if (writes) {
                const bool event = hasEntry(world.lastEntries(), {"transport.sendMessage(25"});
                check((world.handler->outcome().kind == SettingsHandlerKit::Outcome::Kind::CHANGED) == event,
                      "the outcome is changed when an event was sent");
                writes = false;
            }
        }
        world.expectSameCache("all operations");
    }

private:
    static Recorder& recorder() {
        static Recorder instance;
        return instance;
    }

    using Operation = void (Sequence::*)();

    static const std::vector<std::pair<std::string, Operation>>& operations() {
        static const std::vector<std::pair<std::string, Operation>> all{
            {"setSetting", &Sequence::setSetting},
            {"a SetSettings request", &Sequence::setRequest},
            {"a GetSettings request", &Sequence::getRequest},
            {"another request", &Sequence::otherRequest},
            {"a request of any text", &Sequence::textRequest},
            {"getSettings", &Sequence::getSettings},
            {"getCurrentSettingsMap", &Sequence::getCurrentSettingsMap},
            {"initializeSettings", &Sequence::initializeSettings},
            {"migrateExistingDeviceSettings", &Sequence::migrate},
            {"adding an observer", &Sequence::addObserver},
            {"removing an observer", &Sequence::removeObserver},
            {"a notification", &Sequence::notify},
            {"a system setting", &Sequence::notifySystemSetting},
            {"new surroundings", &Sequence::surround},
            {"a stored value", &Sequence::storeBehindItsBack},
            {"setSetting", &Sequence::setSetting},
        };
        return all;
    }

    std::string anyText() { return input.ConsumeRandomLengthString(64); }
    std::string key() {
        const auto index = input.ConsumeIntegralInRange<std::size_t>(0, keys.size());
        return index < keys.size() ? keys[index] : anyText();
    }
    std::string value() {
        const auto index = input.ConsumeIntegralInRange<std::size_t>(0, values.size());
        return index < values.size() ? values[index] : anyText();
    }
    std::vector<std::string> texts(std::string (Sequence::*draw)()) {
        std::vector<std::string> list;
        for (auto count = input.ConsumeIntegralInRange<int>(0, 3); count > 0; --count) {
            list.push_back((this->*draw)());
        }
        return list;
    }

    void setSetting() {
        const std::string name = key();
        const std::string wanted = value();
        if (!SettingsHandlerKit::isSafeForHandler(name, wanted)) {
            check(!world.handler->setSetting(name, wanted), "the result of a rejected setSetting");
            return world.expectRejection(rejection);
        }
        check(world.handler->setSetting(name, wanted) == world.model.setSetting(name, wanted),
              "the result of setSetting");
        writes = true;
    }

    void request(int type, const std::string& text) {
        world.transport->deliver(type, text);
        if (type == 24 && !mayBeGiven(text)) {
            return world.expectRejection(rejection);
        }
        world.model.request(type, text);
        writes = type == 24;
    }

    void setRequest() {
        const auto timestamp =
            input.ConsumeBool() ? input.ConsumeIntegralInRange<long>(-2, 5) : input.ConsumeIntegral<long>();
        const std::string name = key();
        const bool hasValue = input.ConsumeIntegralInRange<int>(0, 7) > 0;
        const std::string to = hasValue ? R"(,"to":)" + stringText(value()) : "";
        request(24, R"({"timestamp":)" + std::to_string(timestamp) + R"(,"payload":{"settingDBId":)" +
                        stringText(name) + to + "}}");
    }

    // One draw per statement, so that a kept input means the same with every compiler.
    void getRequest() {
        const std::string messageId = input.ConsumeRandomLengthString(8);
        const std::string names = arrayText(texts(&Sequence::key));
        request(7, R"({"messageId":)" + stringText(messageId) + R"(,"payload":{"settings":)" + names + "}}");
    }

    void otherRequest() {
        constexpr int types[] = {18, 19, 22};
        const int type = types[input.ConsumeIntegralInRange<std::size_t>(0, 2)];
        request(type, R"({"messageId":)" + stringText(input.ConsumeRandomLengthString(8)) + "}");
    }

    void textRequest() {
        constexpr int types[] = {7, 18, 24};
        const int type = types[input.ConsumeIntegralInRange<std::size_t>(0, 2)];
        request(type, input.ConsumeRandomLengthString(256));
    }

    void getSettings() {
        const auto names = texts(&Sequence::key);
        check(world.handler->getSettings(names) == world.model.getSettings(names), "the result of getSettings");
    }

    void getCurrentSettingsMap() { world.expectSameCache("an operation"); }

    void initializeSettings() {
        world.handler->initializeSettings();
        world.model.initializeSettings();
    }

    /// Sets an unusable stored locale aside first, as the checked handler does, which reads it once more.
    void migrate() {
        const auto stored = world.storage.values.find("orliaLocale");
        if (stored != world.storage.values.end() &&
            !SettingsHandlerKit::isSafeForHandler(stored->first, stored->second)) {
            world.model.around.stored.erase(stored->first);
            world.storage.values.erase(stored);
        }
        world.handler->SettingsHandler::migrateExistingDeviceSettings();
        world.model.migrateExistingDeviceSettings();
    }

    ReferenceModel::Observer observer() {
        const auto number = input.ConsumeIntegralInRange<int>(0, HandlerWorld::observerCount);
        return number < HandlerWorld::observerCount ? ReferenceModel::Observer(number) : std::nullopt;
    }

    template <typename Observers>
    static typename Observers::value_type at(const Observers& observers, ReferenceModel::Observer number) {
        return number ? observers.at(static_cast<std::size_t>(*number)) : nullptr;
    }

    void addObserver() {
        const auto number = observer();
        switch (input.ConsumeIntegralInRange<int>(0, 2)) {
            case 0:
                world.handler->addOrliaLocaleObserver(at(world.localeObservers, number));
                return world.model.addLocaleObserver(number);
            case 1:
                world.handler->addFriendlyNameObserver(at(world.friendlyNameObservers, number));
                return world.model.addFriendlyNameObserver(number);
            default:
                world.handler->addEntitlementStatusObserver(at(world.entitlementObservers, number));
                return world.model.addEntitlementObserver(number);
        }
    }

    void removeObserver() {
        const auto number = observer();
        if (input.ConsumeBool()) {
            world.handler->removeFriendlyNameObserver(at(world.friendlyNameObservers, number));
            world.model.removeFriendlyNameObserver(number);
        } else {
            world.handler->removeEntitlementStatusObserver(at(world.entitlementObservers, number));
            world.model.removeEntitlementObserver(number);
        }
    }

    void notify() {
        switch (input.ConsumeIntegralInRange<int>(0, 4)) {
            case 0: {
                const std::string locale = value();
                world.handler->notifyLocaleChange(locale);
                return world.model.notifyLocaleChange(locale);
            }
            case 1: {
                const auto locales = texts(&Sequence::value);
                world.handler->notifyLocaleChange(locales);
                return world.model.notifyLocalesChange(locales);
            }
            case 2: {
                const std::string timezone = value();
                world.handler->notifyTimezoneChange(timezone);
                return world.model.notifyTimezoneChange(timezone);
            }
            case 3: {
                const bool enabled = input.ConsumeBool();
                world.handler->notifyHandsfreeStateChanged(enabled);
                return world.model.notifyHandsfreeStateChanged(enabled);
            }
            default:
                world.handler->notifyNetworkConnectionChanged(anyText());
                world.handler->notifyMicrophoneAvailabilityChanged(anyText());
                world.handler->notifyAudioGuidanceChanged(input.ConsumeBool());
                world.handler->notifyDeviceModeChanged(anyText());
        }
    }

    void notifySystemSetting() {
        const std::string name = key();
        const std::string reported = value();
        world.handler->notifySystemSettingChanged(name, reported);
        if (!SettingsHandlerKit::isSafeForHandler(name, reported)) {
            return world.expectRejection(
                "rejected orliaLocale from the device: must be a JSON array of at most 32 levels");
        }
        world.model.notifySystemSettingChanged(name, reported);
        writes = true;
    }

    void surround() {
        Surroundings around = surroundingsFrom(input.ConsumeIntegral<std::uint8_t>());
        around.refusesRemoval = input.ConsumeBool();
        // Keeps stored values and those of the voice SDK, so that later operations use them.
        if (input.ConsumeBool()) {
            around.stored = world.model.around.stored;
            around.locales = world.model.around.locales;
            around.timezone = world.model.around.timezone;
        }
        world.surround(around);
    }

    void storeBehindItsBack() {
        const std::string name = key();
        const std::string stored = value();
        world.storage.values[name] = stored;
        world.model.around.stored[name] = stored;
    }

    FuzzedDataProvider input;
    HandlerWorld world;
    /// The operation was a write, which has an outcome.
    bool writes = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Sequence(data, size).run();
    return 0;
}
