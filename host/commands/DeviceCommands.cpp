#include "commands/DeviceCommands.h"

#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "Utils/RapidjsonUtil.h"
#include "guard/LocaleGuard.h"
#include "logging/HostLog.h"
#include "text/Frames.h"

namespace SettingsHost {

namespace {

/// The command's arguments; each answers nothing when it is missing or of another type.
class Arguments {
public:
    explicit Arguments(rapidjson::Document& frame) : request(frame) {}

    std::optional<std::string> text(const std::string& name) {
        std::string value;
        if (!Utils::RapidjsonUtil::tryGetStringMember(request, name, value)) {
            return std::nullopt;
        }
        return value;
    }

    std::optional<bool> boolean(const std::string& name) {
        const auto member = request.FindMember(name);
        if (member == request.MemberEnd() || !member->value.IsBool()) {
            return std::nullopt;
        }
        return member->value.GetBool();
    }

    /// A list of non-empty strings only.
    std::optional<std::vector<std::string>> texts(const std::string& name) {
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
    rapidjson::Document& request;
};

std::string done() {
    return R"({"ok":true})";
}

std::string written(bool success) {
    return success ? done() : refusalFrame("not-written", "the simulated device could not save it");
}

std::string badArgument(const std::string& message) {
    return refusalFrame("bad-argument", message);
}

}  // namespace

DeviceCommands::DeviceCommands(std::shared_ptr<SimulatedDevice> simulatedDevice,
                               std::shared_ptr<SimulatedSdkBridge> simulatedSdkBridge,
                               std::shared_ptr<SimulatedAppLaunch> simulatedAppLaunch)
    : device(std::move(simulatedDevice)),
      sdkBridge(std::move(simulatedSdkBridge)),
      appLaunch(std::move(simulatedAppLaunch)) {}

std::string DeviceCommands::show() const {
    std::map<std::string, std::string> facts = device->getDeviceInfo();
    facts["captionsEnabled"] = sdkBridge->isCaptionsEnabled() ? "true" : "false";
    facts["doNotDisturbEnabled"] = sdkBridge->isDoNotDisturbEnabled() ? "true" : "false";
    facts["locales"] = Utils::RapidjsonUtil::stringifyVector(sdkBridge->getLocales());
    facts["timezone"] = sdkBridge->getTimezone();
    if (!appLaunch->lastLaunched().empty()) {
        facts["lastLaunchedApp"] = appLaunch->lastLaunched();
    }
    return objectFrame("device", facts);
}

std::string DeviceCommands::execute(const std::string& frame) {
    rapidjson::Document request;
    request.Parse<Utils::jsonParseFlags>(frame.c_str());
    Arguments arguments(request);
    const std::string command = arguments.text("command").value_or("");
    const auto text = arguments.text("value");
    const auto enabled = arguments.boolean("enabled");

    if (command == "show") {
        return show();
    }
    if (command == "locale") {
        if (!text || text->empty()) {
            return badArgument("\"value\" must be a locale, for example \"fr-FR\"");
        }
        device->changeLocale(*text);
        const auto locales = sdkBridge->getLocales();
        return written(!locales.empty() && locales.front() == *text);
    }
    if (command == "locales") {
        const auto locales = arguments.texts("values");
        if (!locales || locales->empty()) {
            return badArgument("\"values\" must be an array of locales, the primary one first");
        }
        device->changeLocales(*locales);
        return written(sdkBridge->getLocales() == *locales);
    }
    if (command == "timezone") {
        if (!text) {
            return badArgument("\"value\" must be a time zone, for example \"Europe/Paris\"");
        }
        device->changeTimezone(*text);
        return written(sdkBridge->getTimezone() == *text);
    }
    if (command == "setting") {
        const auto key = arguments.text("key");
        if (!key || !text) {
            return badArgument("\"key\" and \"value\" must be strings");
        }
        if (!mayReachHandler(*key, *text)) {
            logHost(VessaLogger::ERROR, "the device's value of '" + *key + "' was kept away from the handler");
            return refusalFrame("not-passed-on", "the value is no array of locales within the nesting limit");
        }
        device->changeSystemSetting(*key, *text);
        return done();
    }
    if (command == "handsfree" || command == "captions" || command == "doNotDisturb") {
        if (!enabled) {
            return badArgument("\"enabled\" must be true or false");
        }
        if (command == "handsfree") {
            return written(device->switchHandsfree(*enabled));
        }
        return written(command == "captions" ? sdkBridge->setCaptionsEnabled(*enabled)
                                             : sdkBridge->setDoNotDisturbEnabled(*enabled));
    }
    return refusalFrame("unknown-command", "\"command\" must be one of the device's commands, for example \"show\"");
}

}  // namespace SettingsHost
