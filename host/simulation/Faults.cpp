#include "simulation/Faults.h"

#include <algorithm>

#include "SettingsHandlerKit/Logging.h"
#include "SettingsHandlerKit/SettingDescriptions.h"

namespace SettingsHost {

namespace {

using SettingsHandlerKit::SetBy;
using SettingsHandlerKit::SettingOwner;

/// The settings that the voice SDK sets; it hands the friendly name to the storage, and switches to the device.
std::vector<std::string> settingsOfSdk(bool withThoseOfTheDevice) {
    std::vector<std::string> keys;
    for (const auto& setting : SettingsHandlerKit::settingDescriptions()) {
        const bool isSdks = setting.owner != SettingOwner::STORAGE || setting.type == SettingsHandler::FRIENDLY_NAME;
        if (isSdks && (withThoseOfTheDevice || setting.setBy == SetBy::ANYONE)) {
            keys.push_back(setting.key);
        }
    }
    return keys;
}

constexpr std::int64_t minute = 60'000;
/// Some 47 years: time stamps stay positive, and what the clock can express.
constexpr std::int64_t longestJump = 1'500'000'000'000;

FaultDescription switchNamed(Fault fault, const char* name, const char* description) {
    return {fault, name, FaultKind::SWITCH, false, 0, 0, 0, {}, description};
}

FaultDescription delayNamed(Fault fault, const char* name, std::int64_t defaultTime, const char* description) {
    return {fault, name, FaultKind::MILLISECONDS, false, 1, minute, defaultTime, {}, description};
}

FaultDescription settingNamed(Fault fault, const char* name, bool once, bool withThoseOfTheDevice,
                              const char* description) {
    return {fault, name, FaultKind::SETTING, once, 0, 0, 0, settingsOfSdk(withThoseOfTheDevice), description};
}

std::vector<FaultDescription> makeFaults() {
    return {
        switchNamed(Fault::STORAGE_FULL, "storage-full", "Writes to the disk fail: there is no room."),
        delayNamed(Fault::STORAGE_SLOW, "storage-slow", 500, "Each flush to the disk takes this much longer."),
        switchNamed(Fault::STORAGE_FAILING, "storage-failing", "Reads and writes of the disk fail."),
        settingNamed(Fault::SDK_REFUSES, "sdk-refuses", false, false, "The voice SDK refuses values of the setting."),
        delayNamed(Fault::SDK_SLOW, "sdk-slow", 500, "Each call of the voice SDK takes this much longer."),
        settingNamed(Fault::SDK_CHANGES, "sdk-changes", true, true,
                     "The voice SDK changes the setting by itself, once."),
        delayNamed(Fault::REPLIES_LATE, "replies-late", 2000,
                   "Replies, events and notices are delayed by this much, in order."),
        switchNamed(Fault::EVENTS_DROPPED, "events-dropped",
                    "Each new event closes the connections it would be sent to."),
        {Fault::CLOCK_JUMP,
         "clock-jump",
         FaultKind::MILLISECONDS,
         false,
         -longestJump,
         longestJump,
         60 * minute,
         {},
         "The host's clock is ahead by this much; behind if negative."},
        {Fault::RESTART, "restart", FaultKind::ACTION, true, 0, 0, 0, {}, "The host stops and starts again, now."},
    };
}

std::string textOf(const FaultValue& value) {
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        return " " + std::to_string(*number);
    }
    const auto* const key = std::get_if<std::string>(&value);
    return key != nullptr ? " " + *key : "";
}

void logSwitched(const char* what, const FaultDescription& fault, const FaultValue& value = {}) {
    SettingsHandlerKit::writeLog(VessaLogger::WARNING, what + (fault.name + textOf(value)));
}

FaultValue orDefault(const FaultDescription& fault, const FaultValue& value) {
    if (!std::holds_alternative<std::monostate>(value)) {
        return value;
    }
    switch (fault.kind) {
        case FaultKind::MILLISECONDS:
            return fault.defaultTime;
        case FaultKind::SETTING:
            return fault.settings.front();
        default:
            return {};
    }
}

}  // namespace

const char* kindName(FaultKind kind) {
    switch (kind) {
        case FaultKind::SWITCH:
            return "switch";
        case FaultKind::MILLISECONDS:
            return "milliseconds";
        case FaultKind::SETTING:
            return "setting";
        default:
            return "action";
    }
}

const std::vector<FaultDescription>& allFaults() {
    static const std::vector<FaultDescription> faults = makeFaults();
    return faults;
}

const FaultDescription* findFault(std::string_view name) {
    const auto& faults = allFaults();
    const auto found =
        std::find_if(faults.begin(), faults.end(), [&](const auto& fault) { return fault.name == name; });
    return found == faults.end() ? nullptr : &*found;
}

const FaultDescription& describe(Fault fault) {
    return allFaults().at(static_cast<std::size_t>(fault));
}

std::chrono::milliseconds Faults::timeOf(Fault fault) const {
    const auto found = values.find(fault);
    return std::chrono::milliseconds(found == values.end() ? 0 : std::get<std::int64_t>(found->second));
}

bool Faults::concerns(Fault fault, const std::string& key) const {
    const auto found = values.find(fault);
    return found != values.end() && found->second == FaultValue(key);
}

std::vector<std::string> Faults::namesOn() const {
    std::vector<std::string> names;
    for (const auto& entry : values) {
        names.emplace_back(describe(entry.first).name);
    }
    return names;
}

std::string Faults::problemWith(const FaultDescription& fault, const FaultValue& value) {
    const std::string must = std::string("the value of ") + fault.name + " must be ";
    if (fault.kind == FaultKind::MILLISECONDS) {
        const auto* const time = std::get_if<std::int64_t>(&value);
        return time != nullptr && *time >= fault.minimum && *time <= fault.maximum
                   ? ""
                   : must + "a number of milliseconds from " + std::to_string(fault.minimum) + " to " +
                         std::to_string(fault.maximum);
    }
    if (fault.kind == FaultKind::SETTING) {
        const auto* const key = std::get_if<std::string>(&value);
        const auto& keys = fault.settings;
        std::string list;
        for (const auto& allowed : keys) {
            list += (list.empty() ? "" : ", ") + allowed;
        }
        return key != nullptr && std::find(keys.begin(), keys.end(), *key) != keys.end() ? "" : must + "one of " + list;
    }
    return std::string(fault.name) + " takes no value";
}

Faults::Result Faults::switchOn(Fault fault, const FaultValue& value) {
    const FaultDescription& described = describe(fault);
    const FaultValue wanted = orDefault(described, value);
    if (described.once) {
        logSwitched("fault: ", described, wanted);
        const auto* const key = std::get_if<std::string>(&wanted);
        return actions.at(fault)(key == nullptr ? "" : *key) ? Result::CHANGED : Result::FAILED;
    }
    if (const auto found = values.find(fault); found != values.end() && found->second == wanted) {
        return Result::UNCHANGED;
    }
    values[fault] = wanted;
    logSwitched("fault on: ", described, wanted);
    changed(fault);
    return Result::CHANGED;
}

Faults::Result Faults::switchOff(Fault fault) {
    if (values.erase(fault) == 0) {
        return Result::UNCHANGED;
    }
    logSwitched("fault off: ", describe(fault));
    changed(fault);
    return Result::CHANGED;
}

void Faults::changed(Fault fault) {
    const auto [first, last] = observers.equal_range(fault);
    std::for_each(first, last, [](const auto& observer) { observer.second(); });
}

}  // namespace SettingsHost
