#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Utils/Rapidjson.h"
#include "simulation/SimulatedAppLaunch.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/SimulatedSdkBridge.h"

namespace SettingsHost {

/// What the handler did so far. Its notifications have no result, so a command compares these before and after.
struct HandlerCounts {
    /// One for each accepted value.
    unsigned long events = 0;
    /// Failed accesses to the storage.
    unsigned long storageFailures = 0;
};

/// The device commands, see docs/protocol.md.
class DeviceCommands {
public:
    DeviceCommands(std::shared_ptr<SimulatedDevice> device, std::shared_ptr<SimulatedSdkBridge> sdkBridge,
                   std::shared_ptr<SimulatedAppLaunch> appLaunch, std::function<HandlerCounts()> handlerCounts);

    /// Executes `request`, an object with the member "command" and the command's arguments.
    /// Returns: the reply, one JSON object without a line end: `{"ok":true}`, `{"ok":true,"changed":false}`,
    /// `{"device":{…}}` or `{"error":{…}}`.
    std::string execute(const rapidjson::Value& request);

private:
    class Arguments;

    std::string show(const Arguments& arguments);
    std::string changeLocale(const Arguments& arguments);
    std::string changeLocales(const Arguments& arguments);
    std::string changeTimezone(const Arguments& arguments);
    std::string changeSetting(const Arguments& arguments);
    std::string whyNothingChanged(const std::string& key, const std::string& value, bool storageFailed);
    std::string switchHandsfree(const Arguments& arguments);
    std::string switchCaptions(const Arguments& arguments);
    std::string switchDoNotDisturb(const Arguments& arguments);

    std::shared_ptr<SimulatedDevice> device;
    std::shared_ptr<SimulatedSdkBridge> sdkBridge;
    std::shared_ptr<SimulatedAppLaunch> appLaunch;
    std::function<HandlerCounts()> counts;
};

}  // namespace SettingsHost
