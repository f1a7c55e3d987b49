#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "SettingsHandler/SettingsHandlerInterface.h"

namespace SettingsHandlerTesting {

/// The handler, for tests of a service or a device layer that calls it. Apart from `Mocks.h`, because it takes a
/// compiler as long as all of them.
///
/// Knobs: those of GoogleMock. Threads: as GoogleMock has it: expectations first, then calls from any thread.
///
/// Unlike the handler it holds nothing: without an `ON_CALL` it answers false or an empty map, and no observer that is
/// added is ever told.
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
