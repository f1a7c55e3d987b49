#pragma once

#include <string>

#include "VessaNativeCommon/FriendlyNameObserverInterface.h"
#include "VessaNativeCommon/OrliaLocaleObserverInterface.h"
#include "teskVessa/NativeBridgeInterface.h"

namespace SettingsHost {

/// The host's own observers. Each logs changes at level 1.

class LoggingLocaleObserver : public VessaNativeCommon::OrliaLocaleObserverInterface {
public:
    void notifyOrliaLocaleChanged(const std::string& locale) override;
};

class LoggingFriendlyNameObserver : public VessaNativeCommon::FriendlyNameObserverInterface {
public:
    void notifyFriendlyNameChanged(const std::string& friendlyName) override;
};

class LoggingEntitlementObserver : public teskVessa::NativeBridgeInterface {
public:
    void notifyEntitlementStatusChanged(const std::string& status) override;
};

}  // namespace SettingsHost
