#include "Logging.h"
#include "SettingsHandler/SettingsHandler.h"

namespace SettingsHandler {

void SettingsHandler::migrateExistingDeviceSettings() {
    logInformation(logTag, "migrateExistingDeviceSettings");
    const std::vector<std::string> keys{settingNameFromType(ORLIA_LOCALE), settingNameFromType(TIMEZONE)};
    std::string value;
    for (const auto& key : keys) {
        storageManager.getValue(key, value);
        if (value.empty()) {
            logInformation(logTag, "No value retrieved for %s", key.c_str());
            continue;
        }
        if (setSetting(key, value)) {
            logInformation(logTag, "%s migrated successfully", key.c_str());
            storageManager.removeValue(key);
        } else {
            // Intended: a value that the voice SDK already has counts as refused and stays in the storage.
            logError(logTag, "%s was not migrated successfully", key.c_str());
        }
    }
}

}  // namespace SettingsHandler
