#pragma once

#include <string>

#include "DeviceAbstractionLayer/AppLaunch.h"

namespace SettingsHost {

/// A launcher that only logs, and keeps the name of the last application.
class SimulatedAppLaunch : public DeviceAbstractionLayer::AppLaunch {
public:
    bool launchApp(std::string appName, std::string argument) override;

    /// The name of the application launched last in this run; empty when none was.
    const std::string& lastLaunched() const { return lastAppName; }

private:
    std::string lastAppName;
};

}  // namespace SettingsHost
