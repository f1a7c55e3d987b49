#include "simulation/LoggingObservers.h"

#include "service/logging/HostLog.h"

namespace SettingsHost {

void LoggingLocaleObserver::notifyOrliaLocaleChanged(const std::string& locale) {
    logHost(VessaLogger::INFORMATION, "the assistant locale is now '" + locale + "'");
}

void LoggingFriendlyNameObserver::notifyFriendlyNameChanged(const std::string& /*friendlyName*/) {
    // What people call their television stays out of the host's own lines.
    logHost(VessaLogger::INFORMATION, "the friendly name was changed");
}

void LoggingEntitlementObserver::notifyEntitlementStatusChanged(const std::string& status) {
    logHost(VessaLogger::INFORMATION, "the entitlement status is now '" + status + "'");
}

}  // namespace SettingsHost
