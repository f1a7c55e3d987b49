// The model of the device socket.

#include <algorithm>

#include "model/Json.h"
#include "model/WireModel.h"
#include "simulation/HostModel.h"

namespace SettingsSimulation {

namespace {

using SettingsHandlerFuzz::arrayElements;
using SettingsHandlerFuzz::arrayText;
using SettingsHandlerFuzz::isRejectedValue;
using SettingsHandlerFuzz::stringText;

constexpr const char* done = R"({"ok":true})";
constexpr const char* unchanged = R"({"ok":true,"changed":false})";

std::string refusal(const std::string& code) {
    return R"({"error":{"code":")" + code + R"(","message":")" + std::string(1, Unknown::text) + "\"}}";
}

std::string written(bool success) {
    return success ? done : refusal("not-written");
}

/// What a fault is set to without a value; "" for a switch, nothing for one that happens once.
struct FaultRule {
    std::string name;
    std::string byDefault;
    bool isTime;
    bool isOnce;
};

const std::vector<FaultRule>& faultRules() {
    static const std::vector<FaultRule> all{
        {"storage-full", "", false, false},     {"storage-slow", "500", true, false},
        {"storage-failing", "", false, false},  {"sdk-refuses", "orliaLocale", false, false},
        {"sdk-slow", "500", true, false},       {"sdk-changes", "orliaLocale", false, true},
        {"replies-late", "2000", true, false},  {"events-dropped", "", false, false},
        {"clock-jump", "3600000", true, false}, {"restart", "", false, true},
    };
    return all;
}

}  // namespace

void HostModel::deviceFrame(const std::string& frame) {
    const Envelope json(frame);
    const std::string name = json.text("command").value_or("");
    perform("device", "");
    const std::string reply = command(name, json);
    performed();
    toSender(reply);
}

std::string HostModel::command(const std::string& name, const Envelope& frame) {
    if (name == "show") {
        return shown();
    }
    if (name == "locale" || name == "locales") {
        return deviceLocales(name, frame);
    }
    if (name == "timezone") {
        return deviceTimezone(frame);
    }
    if (name == "handsfree" || name == "captions" || name == "doNotDisturb") {
        return frame.isBoolean("enabled") ? deviceSwitch(name, frame.isTrue("enabled")) : refusal("bad-argument");
    }
    if (name == "setting") {
        return deviceSetting(frame);
    }
    if (name == "fault") {
        return faultCommand(frame);
    }
    return name == "faults" ? faultList() : refusal("unknown-command");
}

std::string HostModel::deviceLocales(const std::string& name, const Envelope& frame) {
    std::vector<std::string> wanted;
    if (name == "locale") {
        const auto value = frame.text("value");
        if (!value || value->empty()) {
            return refusal("bad-argument");
        }
        notifyLocaleChange(*value);
        return written(!around.locales.empty() && around.locales.front() == *value);
    }
    const std::string list = frame.compact("values");
    const auto values = list.empty() || list.front() != '[' ? std::nullopt : arrayElements(list);
    if (!values || values->empty() ||
        !std::all_of(values->begin(), values->end(), [](const auto& each) { return each && !each->empty(); })) {
        return refusal("bad-argument");
    }
    for (const auto& each : *values) {
        wanted.push_back(*each);
    }
    notifyLocalesChange(wanted);
    return written(around.locales == wanted);
}

std::string HostModel::deviceTimezone(const Envelope& frame) {
    const auto value = frame.text("value");
    if (!value || value->empty()) {
        return refusal("bad-argument");
    }
    notifyTimezoneChange(*value);
    return written(around.timezone == *value);
}

std::string HostModel::deviceSwitch(const std::string& name, bool enabled) {
    if (name == "captions") {
        return written(useCaptions(enabled));
    }
    if (name == "doNotDisturb") {
        return written(useDoNotDisturb(enabled));
    }
    if (!setMode("currentHandsFreeStatus", enabled)) {
        return refusal("not-written");
    }
    notifyHandsfreeStateChanged(enabled);
    return done;
}

std::string HostModel::deviceSetting(const Envelope& frame) {
    const auto key = frame.text("key");
    const auto value = frame.text("value");
    if (!key || !value) {
        return refusal("bad-argument");
    }
    if (isRejectedValue(key, value)) {
        return refusal("not-passed-on");
    }
    notifySystemSettingChanged(*key, *value);
    const auto given = ReferenceModel::answer();
    if (given.outcome == "changed") {
        return done;
    }
    return given.outcome == "refused" ? refusal(given.reason) : unchanged;
}

std::string HostModel::shown() const {
    const auto mode = [this](const std::string& place) { return '"' + place + "\":\"" + around.deviceInfo.at(place); };
    return R"({"device":{"captionsEnabled":")" + std::string(around.captionsEnabled ? "true" : "false") + "\"," +
           mode("currentAlwaysOnPTTMode") + "\"," + mode("currentAlwaysOnVoiceMode") + "\"," +
           mode("currentHandsFreeStatus") + R"(","doNotDisturbEnabled":")" +
           (around.doNotDisturbEnabled ? "true" : "false") + '"' +
           (launched ? R"(,"lastLaunchedApp":"voice-assistant-settings")" : "") + R"(,"locales":)" +
           stringText(arrayText(around.locales)) + R"(,"timezone":)" + stringText(around.timezone) + "}}";
}

/// Of values that are right for the fault.
std::string HostModel::faultCommand(const Envelope& frame) {
    const auto& rules = faultRules();
    const auto rule = std::find_if(rules.begin(), rules.end(),
                                   [&](const FaultRule& each) { return frame.text("name") == each.name; });
    if (rule == rules.end() || !frame.isBoolean("enabled")) {
        return refusal("bad-argument");
    }
    if (!frame.isTrue("enabled")) {
        return faults.erase(rule->name) > 0 ? done : unchanged;
    }
    std::string value = rule->byDefault;
    if (frame.has("value")) {
        value = rule->isTime ? frame.compact("value") : frame.text("value").value_or("");
    }
    if (rule->name == "restart") {
        asksRestart = true;
        return done;
    }
    if (rule->isOnce) {
        return written(changeByItself(value));
    }
    if (isOn(rule->name) && faults.at(rule->name) == value) {
        return unchanged;
    }
    faults[rule->name] = value;
    return done;
}

std::string HostModel::faultList() const {
    std::string list;
    for (const auto& rule : faultRules()) {
        const bool on = isOn(rule.name);
        const std::string value = on ? faultValue(rule.name) : "";
        list += list.empty() ? "" : ",";
        list += R"({"name":")" + rule.name + R"(","on":)" + (on ? "true," : "false,");
        list += value.empty() ? "" : "\"value\":" + (rule.isTime ? value : stringText(value)) + ",";
        list += std::string(1, Unknown::json) + "}";
    }
    return R"({"faults":[)" + list + "]}";
}

}  // namespace SettingsSimulation
