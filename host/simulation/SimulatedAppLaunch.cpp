#include "simulation/SimulatedAppLaunch.h"

#include <utility>

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHost {

bool SimulatedAppLaunch::launchApp(std::string appName, std::string argument) {
    SettingsHandlerKit::writeLog(VessaLogger::INFORMATION,
                                 "launching the application '" + appName + "' with '" + argument + "'");
    lastAppName = std::move(appName);
    return true;
}

}  // namespace SettingsHost
