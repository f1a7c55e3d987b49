#pragma once

#include <functional>
#include <memory>
#include <string>

#include "simulation/SimulatedAppLaunch.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/SimulatedSdkBridge.h"

namespace SettingsHost {

/// What came of everything that the handler was told so far. It answers nothing itself.
struct HandlerCounts {
    /// One for each value that it accepted.
    unsigned long events = 0;
    /// Accesses to the storage.
    unsigned long storageFailures = 0;
};

/// What a person does at the simulated device, given as one JSON object each. docs/protocol.md lists the commands.
class DeviceCommands {
public:
    DeviceCommands(std::shared_ptr<SimulatedDevice> device, std::shared_ptr<SimulatedSdkBridge> sdkBridge,
                   std::shared_ptr<SimulatedAppLaunch> appLaunch, std::function<HandlerCounts()> handlerCounts);

    /// Executes the command in `frame`, a JSON object within the limits of the listeners.
    /// Returns: the answer, one JSON object without a line end: `{"ok":true}`, `{"ok":true,"changed":false}`,
    /// `{"device":{…}}` or `{"error":{…}}`.
    std::string execute(const std::string& frame);

private:
    class Arguments;

    std::string show(Arguments& arguments);
    std::string changeLocale(Arguments& arguments);
    std::string changeLocales(Arguments& arguments);
    std::string changeTimezone(Arguments& arguments);
    std::string changeSetting(Arguments& arguments);
    std::string whyNothingChanged(const std::string& key, const std::string& value, bool storageFailed);
    std::string switchHandsfree(Arguments& arguments);
    std::string switchCaptions(Arguments& arguments);
    std::string switchDoNotDisturb(Arguments& arguments);

    std::shared_ptr<SimulatedDevice> device;
    std::shared_ptr<SimulatedSdkBridge> sdkBridge;
    std::shared_ptr<SimulatedAppLaunch> appLaunch;
    std::function<HandlerCounts()> counts;
};

}  // namespace SettingsHost
