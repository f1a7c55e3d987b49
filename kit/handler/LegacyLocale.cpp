#include "handler/LegacyLocale.h"

#include <stdexcept>
#include <string>

#include "SettingsHandler/SettingsNames.h"
#include "SettingsHandlerKit/LegacyValueStorage.h"
#include "SettingsHandlerKit/Logging.h"
#include "handler/LocaleGuard.h"

namespace SettingsHandlerKit {

namespace {

/// For a storage that cannot rename. After a loss of power between the two steps the copy is found and used.
/// Returns: the new key; empty when that failed.
std::string copyAndRemove(SDKWrapper::StorageManagerInterface& storage, const std::string& key,
                          const std::string& value) {
    constexpr int mostCopies = 1000;
    std::string newKey = key + ".unusable";
    std::string found;
    storage.getValue(newKey, found);
    for (int number = 2; !found.empty() && found != value; ++number) {
        if (number > mostCopies) {
            return "";
        }
        newKey = key + ".unusable." + std::to_string(number);
        storage.getValue(newKey, found);
    }
    const bool copied = found == value || storage.setValue(newKey, value);
    return copied && storage.removeValue(key) ? newKey : "";
}

}  // namespace

void setUnusableLocaleAside(SDKWrapper::StorageManagerInterface& storage) {
    const std::string key = SettingsHandler::settingNameFromType(SettingsHandler::ORLIA_LOCALE);
    std::string value;
    storage.getValue(key, value);
    if (isSafeForHandler(key, value)) {
        return;
    }
    auto* renaming = dynamic_cast<LegacyValueStorage*>(&storage);
    const std::string newKey = renaming != nullptr ? renaming->setAside(key) : copyAndRemove(storage, key, value);
    if (newKey.empty()) {
        throw std::runtime_error("the stored value of '" + key + "' is unusable and could not be set aside");
    }
    writeLog(VessaLogger::ERROR,
             "rejected stored " + key + ": must be a JSON array of at most 32 levels; moved to '" + newKey + "'");
}

}  // namespace SettingsHandlerKit
