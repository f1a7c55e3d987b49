#pragma once

#include <functional>
#include <memory>
#include <string>

#include "SettingsHandlerKit/Outcome.h"
#include "Utils/Rapidjson.h"
#include "simulation/Faults.h"
#include "simulation/SimulatedAppLaunch.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/SimulatedSdkBridge.h"

namespace SettingsHost {

/// The device commands, see docs/protocol.md.
class DeviceCommands {
public:
    /// Returns: the frame that saves the world (World.h), with personal values or without.
    using SaveWorld = std::function<std::string(bool withValues)>;

    /// `handlerOutcome`: of what the handler did last. Its notifications have no result.
    DeviceCommands(std::shared_ptr<SimulatedDevice> device, std::shared_ptr<SimulatedSdkBridge> sdkBridge,
                   std::shared_ptr<SimulatedAppLaunch> appLaunch,
                   std::function<SettingsHandlerKit::Outcome()> handlerOutcome, std::shared_ptr<Faults> faults,
                   SaveWorld saveWorld);

    /// Executes `request`, an object with the member "command" and the command's arguments.
    /// Returns: the reply, one JSON object without a line end: `{"ok":true}`, `{"ok":true,"changed":false}`,
    /// `{"device":{…}}`, `{"faults":[…]}`, `{"world":{…},…}` or `{"error":{…}}`.
    std::string execute(const rapidjson::Value& request);

private:
    class Arguments;

    std::string show(const Arguments& arguments);
    std::string changeLocale(const Arguments& arguments);
    std::string changeLocales(const Arguments& arguments);
    std::string changeTimezone(const Arguments& arguments);
    std::string changeSetting(const Arguments& arguments);
    std::string switchHandsfree(const Arguments& arguments);
    std::string switchCaptions(const Arguments& arguments);
    std::string switchDoNotDisturb(const Arguments& arguments);
    std::string listFaults(const Arguments& arguments);
    std::string fault(const Arguments& arguments);
    std::string save(const Arguments& arguments);

    std::shared_ptr<SimulatedDevice> device;
    std::shared_ptr<SimulatedSdkBridge> sdkBridge;
    std::shared_ptr<SimulatedAppLaunch> appLaunch;
    std::function<SettingsHandlerKit::Outcome()> outcome;
    std::shared_ptr<Faults> faults;
    SaveWorld saveWorld;
};

}  // namespace SettingsHost
