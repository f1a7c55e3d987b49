#include "simulation/LoggingObservers.h"

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHost {

void LoggingLocaleObserver::notifyOrliaLocaleChanged(const std::string& locale) {
    SettingsHandlerKit::writeLog(VessaLogger::INFORMATION, "the assistant locale is now '" + locale + "'");
}

void LoggingFriendlyNameObserver::notifyFriendlyNameChanged(const std::string& /*friendlyName*/) {
    // The name is personal: the host's own log lines do not hold it.
    SettingsHandlerKit::writeLog(VessaLogger::INFORMATION, "the friendly name was changed");
}

void LoggingEntitlementObserver::notifyEntitlementStatusChanged(const std::string& status) {
    SettingsHandlerKit::writeLog(VessaLogger::INFORMATION, "the entitlement status is now '" + status + "'");
}

}  // namespace SettingsHost
