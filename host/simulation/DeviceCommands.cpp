#include "simulation/DeviceCommands.h"

#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "SettingsHandler/SettingsNames.h"
#include "SettingsHandlerKit/Logging.h"
#include "Utils/RapidjsonUtil.h"
#include "Wire/Frames.h"
#include "simulation/CommandRefusals.h"
#include "simulation/FaultCommands.h"

namespace SettingsHost {

/// The arguments of a command; nothing for one that is missing or of another type.
class DeviceCommands::Arguments {
public:
    explicit Arguments(const rapidjson::Value& frame) : request(frame) {}

    const rapidjson::Value& all() const { return request; }

    std::optional<std::string> text(const std::string& name) const {
        std::string value;
        if (!Utils::RapidjsonUtil::tryGetStringMember(request, name, value)) {
            return std::nullopt;
        }
        return value;
    }

    bool has(const std::string& name) const { return request.HasMember(name); }

    std::optional<bool> boolean(const std::string& name) const {
        const auto member = request.FindMember(name);
        if (member == request.MemberEnd() || !member->value.IsBool()) {
            return std::nullopt;
        }
        return member->value.GetBool();
    }

    /// A list of non-empty strings only.
    std::optional<std::vector<std::string>> texts(const std::string& name) const {
        const auto member = request.FindMember(name);
        if (member == request.MemberEnd() || !member->value.IsArray()) {
            return std::nullopt;
        }
        std::vector<std::string> values;
        for (const auto& element : member->value.GetArray()) {
            if (!element.IsString() || element.GetStringLength() == 0) {
                return std::nullopt;
            }
            values.emplace_back(element.GetString(), element.GetStringLength());
        }
        return values;
    }

private:
    const rapidjson::Value& request;
};

namespace {

std::string done() {
    return R"({"ok":true})";
}

std::string written(bool success) {
    return success ? done() : notWritten();
}

/// The reply to a setting that the device reported.
std::string replyTo(const SettingsHandlerKit::Outcome& outcome, const std::string& key) {
    using SettingsHandlerKit::Outcome;
    if (outcome.rejected) {
        return Wire::refusalFrame("not-passed-on", "the value must be a JSON array of at most 32 levels");
    }
    if (outcome.kind == Outcome::Kind::CHANGED) {
        return done();
    }
    switch (outcome.reason) {
        case Outcome::Reason::READ_ONLY:
            return Wire::refusalFrame("read-only", "nothing changed: '" + key + "' is set only with the command \"" +
                                                       (key == "captionsEnabled" ? "captions" : "doNotDisturb") + "\"");
        case Outcome::Reason::NOT_STORED:
            return Wire::refusalFrame("not-stored",
                                      "nothing changed: the storage refused the value; see the host's log");
        case Outcome::Reason::WRONG_FORM:
            return Wire::refusalFrame("wrong-form",
                                      "nothing changed: the value must be a JSON array with at least one locale");
        default:
            return R"({"ok":true,"changed":false})";
    }
}

std::string notOnOrOff() {
    return badArgument(R"("enabled" must be true or false)");
}

}  // namespace

DeviceCommands::DeviceCommands(std::shared_ptr<SimulatedDevice> simulatedDevice,
                               std::shared_ptr<SimulatedSdkBridge> simulatedSdkBridge,
                               std::shared_ptr<SimulatedAppLaunch> simulatedAppLaunch,
                               std::function<SettingsHandlerKit::Outcome()> handlerOutcome,
                               std::shared_ptr<Faults> faultsOfHost, SaveWorld worldFrameOfHost)
    : device(std::move(simulatedDevice)),
      sdkBridge(std::move(simulatedSdkBridge)),
      appLaunch(std::move(simulatedAppLaunch)),
      outcome(std::move(handlerOutcome)),
      faults(std::move(faultsOfHost)),
      saveWorld(std::move(worldFrameOfHost)) {}

std::string DeviceCommands::show(const Arguments& /*arguments*/) {
    std::map<std::string, std::string> facts = device->getDeviceInfo();
    facts["captionsEnabled"] = sdkBridge->isCaptionsEnabled() ? "true" : "false";
    facts["doNotDisturbEnabled"] = sdkBridge->isDoNotDisturbEnabled() ? "true" : "false";
    facts["locales"] = Utils::RapidjsonUtil::stringifyVector(sdkBridge->getLocales());
    facts["timezone"] = sdkBridge->getTimezone();
    if (!appLaunch->lastLaunched().empty()) {
        facts["lastLaunchedApp"] = appLaunch->lastLaunched();
    }
    return Wire::objectFrame("device", facts);
}

std::string DeviceCommands::changeLocale(const Arguments& arguments) {
    const auto locale = arguments.text("value");
    if (!locale || locale->empty()) {
        return badArgument(R"("value" must be a locale, for example "fr-FR")");
    }
    device->changeLocale(*locale);
    const auto locales = sdkBridge->getLocales();
    return written(!locales.empty() && locales.front() == *locale);
}

std::string DeviceCommands::changeLocales(const Arguments& arguments) {
    const auto locales = arguments.texts("values");
    if (!locales || locales->empty()) {
        return badArgument(R"("values" must be an array of locales, the primary one first)");
    }
    device->changeLocales(*locales);
    return written(sdkBridge->getLocales() == *locales);
}

std::string DeviceCommands::changeTimezone(const Arguments& arguments) {
    const auto timezone = arguments.text("value");
    if (!timezone || timezone->empty()) {
        return badArgument(R"("value" must be a time zone, for example "Europe/Paris")");
    }
    device->changeTimezone(*timezone);
    return written(sdkBridge->getTimezone() == *timezone);
}

std::string DeviceCommands::changeSetting(const Arguments& arguments) {
    const auto key = arguments.text("key");
    const auto value = arguments.text("value");
    if (!key || !value) {
        return badArgument(R"("key" and "value" must be strings)");
    }
    device->changeSystemSetting(*key, *value);
    return replyTo(outcome(), *key);
}

std::string DeviceCommands::switchHandsfree(const Arguments& arguments) {
    const auto enabled = arguments.boolean("enabled");
    return enabled ? written(device->switchHandsfree(*enabled)) : notOnOrOff();
}

std::string DeviceCommands::switchCaptions(const Arguments& arguments) {
    const auto enabled = arguments.boolean("enabled");
    return enabled ? written(sdkBridge->setCaptionsEnabled(*enabled)) : notOnOrOff();
}

std::string DeviceCommands::switchDoNotDisturb(const Arguments& arguments) {
    const auto enabled = arguments.boolean("enabled");
    return enabled ? written(sdkBridge->setDoNotDisturbEnabled(*enabled)) : notOnOrOff();
}

std::string DeviceCommands::listFaults(const Arguments& /*arguments*/) {
    return faultsFrame(*faults);
}

std::string DeviceCommands::fault(const Arguments& arguments) {
    return switchFault(*faults, arguments.all());
}

std::string DeviceCommands::save(const Arguments& arguments) {
    const auto withValues = arguments.boolean("withValues");
    return arguments.has("withValues") && !withValues ? badArgument(R"("withValues" must be true or false)")
                                                      : saveWorld(withValues.value_or(false));
}

std::string DeviceCommands::execute(const rapidjson::Value& request) {
    static const std::map<std::string, std::string (DeviceCommands::*)(const Arguments&)> commands{
        {"show", &DeviceCommands::show},
        {"locale", &DeviceCommands::changeLocale},
        {"locales", &DeviceCommands::changeLocales},
        {"timezone", &DeviceCommands::changeTimezone},
        {"setting", &DeviceCommands::changeSetting},
        {"handsfree", &DeviceCommands::switchHandsfree},
        {"captions", &DeviceCommands::switchCaptions},
        {"doNotDisturb", &DeviceCommands::switchDoNotDisturb},
        {"faults", &DeviceCommands::listFaults},
        {"fault", &DeviceCommands::fault},
        {"save", &DeviceCommands::save},
    };
    const Arguments arguments(request);
    const auto command = commands.find(arguments.text("command").value_or(""));
    if (command == commands.end()) {
        return Wire::refusalFrame("unknown-command",
                                  R"("command" must be one of the device's commands, for example "show")");
    }
    return (this->*command->second)(arguments);
}

}  // namespace SettingsHost
