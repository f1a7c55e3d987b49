#include "simulation/SimulatedAppLaunch.h"

#include <utility>

#include "service/logging/HostLog.h"

namespace SettingsHost {

bool SimulatedAppLaunch::launchApp(std::string appName, std::string argument) {
    SettingsHandlerKit::logHost(VessaLogger::INFORMATION,
                                "launching the application '" + appName + "' with '" + argument + "'");
    lastAppName = std::move(appName);
    return true;
}

}  // namespace SettingsHost
