#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "SettingsHandler/SettingsHandlerInterface.h"

namespace SettingsHandlerTesting {

/// A mock of the handler, for tests of a service or a device layer that calls it. Not in `Mocks.h`, because it takes as
/// long to compile as all mocks in there.
///
/// Options and threads: those of GoogleMock; set the expectations first, then call from any thread.
///
/// Differences from the handler: it has no state. Without an `ON_CALL` it returns false or an empty map, and it
/// notifies no observer.
class MockSettingsHandler : public SettingsHandler::SettingsHandlerInterface {
public:
    /// Key and value of settings.
    using Settings = std::map<std::string, std::string>;

    MOCK_METHOD(void, notifyLocaleChange, (std::string), (override));
    MOCK_METHOD(void, notifyLocaleChange, (std::vector<std::string>), (override));
    MOCK_METHOD(void, notifyTimezoneChange, (std::string), (override));
    MOCK_METHOD(void, notifyNetworkConnectionChanged, (std::string), (override));
    MOCK_METHOD(void, notifyMicrophoneAvailabilityChanged, (std::string), (override));
    MOCK_METHOD(void, notifyAudioGuidanceChanged, (bool), (override));
    MOCK_METHOD(void, notifyDeviceModeChanged, (std::string), (override));
    MOCK_METHOD(void, notifySystemSettingChanged, (std::string, std::string), (override));
    MOCK_METHOD(void, notifyHandsfreeStateChanged, (bool), (override));
    MOCK_METHOD(void, initializeSettings, (), (override));
    MOCK_METHOD(Settings, getSettings, (const std::vector<std::string>&), (override));
    MOCK_METHOD(bool, setSetting, (const std::string&, const std::string&), (override));
    MOCK_METHOD(bool, isRequestValid, (std::string&, long), (override));
    MOCK_METHOD(Settings, getCurrentSettingsMap, (), (override));
    MOCK_METHOD(void, addOrliaLocaleObserver, (std::shared_ptr<VessaNativeCommon::OrliaLocaleObserverInterface>),
                (override));
    MOCK_METHOD(void, addFriendlyNameObserver, (std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface>),
                (override));
    MOCK_METHOD(void, removeFriendlyNameObserver, (std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface>),
                (override));
    MOCK_METHOD(void, addEntitlementStatusObserver, (std::shared_ptr<teskVessa::NativeBridgeInterface>), (override));
    MOCK_METHOD(void, removeEntitlementStatusObserver, (std::shared_ptr<teskVessa::NativeBridgeInterface>), (override));
    MOCK_METHOD(void, migrateExistingDeviceSettings, (), (override));
};

}  // namespace SettingsHandlerTesting
