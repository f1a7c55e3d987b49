#include "Logging.h"
#include "SettingsHandler/SettingsHandler.h"

namespace SettingsHandler {

bool SettingsHandler::isRequestValid(std::string& settingDBId, long timestamp) {
    logInformation(logTag, "isRequestValid");
    // Intended: all unknown keys share the record of INVALID_SETTING.
    const SettingsNamesType type = settingTypeFromName(settingDBId);
    const auto newest = lastRequestTimestamps.find(type);
    if (newest != lastRequestTimestamps.end() && newest->second > timestamp) {
        return false;
    }
    lastRequestTimestamps[type] = timestamp;
    return true;
}

}  // namespace SettingsHandler
