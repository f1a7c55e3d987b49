#include "metrics/ChangeCounter.h"

#include "SettingsHandler/SettingsNames.h"
#include "logging/HostLog.h"

namespace SettingsHost {

void ChangeCounter::recordEvent(const std::string& /*group*/, const std::string& /*source*/,
                                const std::unordered_map<std::string, std::string>& /*attributes*/) {}

void ChangeCounter::recordCounter(const std::string& name, int /*first*/, int /*second*/, double /*third*/) {
    // No key of the catalogue holds the separator, so the key ends at the first one.
    const std::string key = name.substr(0, name.find('_'));
    const bool known = SettingsHandler::settingTypeFromName(key) != SettingsHandler::INVALID_SETTING;
    const std::string counted = known ? key : other;
    const unsigned long count = ++changes[counted];
    logHost(VessaLogger::TRACE, "changes of '" + counted + "': " + std::to_string(count));
}

}  // namespace SettingsHost
