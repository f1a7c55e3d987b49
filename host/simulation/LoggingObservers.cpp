#include "simulation/LoggingObservers.h"

#include "service/logging/HostLog.h"

namespace SettingsHost {

void LoggingLocaleObserver::notifyOrliaLocaleChanged(const std::string& locale) {
    SettingsHandlerKit::logHost(VessaLogger::INFORMATION, "the assistant locale is now '" + locale + "'");
}

void LoggingFriendlyNameObserver::notifyFriendlyNameChanged(const std::string& /*friendlyName*/) {
    // The name is personal: the host's own log lines do not hold it.
    SettingsHandlerKit::logHost(VessaLogger::INFORMATION, "the friendly name was changed");
}

void LoggingEntitlementObserver::notifyEntitlementStatusChanged(const std::string& status) {
    SettingsHandlerKit::logHost(VessaLogger::INFORMATION, "the entitlement status is now '" + status + "'");
}

}  // namespace SettingsHost
