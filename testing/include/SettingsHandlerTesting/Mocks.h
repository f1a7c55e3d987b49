#pragma once

#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include <gmock/gmock.h>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "DeviceAbstractionLayer/AppLaunch.h"
#include "DeviceAbstractionLayer/DeviceInfoObserverInterface.h"
#include "DeviceAbstractionLayer/HandsfreeStateObserverInterface.h"
#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "Metrics/MetricsDelegateInterface.h"
#include "SDKWrapper/StorageManagerInterface.h"
#include "VessaNativeCommon/FriendlyNameObserverInterface.h"
#include "VessaNativeCommon/OrliaLocaleObserverInterface.h"
#include "teskVessa/NativeBridgeInterface.h"
#include "teskVessa/SDKBridgeInterface.h"

/// Mocks of every collaborator and observer, for tests that expect single calls. Where the order of all calls matters,
/// use the fakes and their journal.
///
/// Options and threads: those of GoogleMock; set the expectations first, then call from any thread.
///
/// Differences from the real ones: they have no state. Without an `ON_CALL` a read returns false, an empty string or an
/// empty collection, and a written value is not read back.
namespace SettingsHandlerTesting {

class MockTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    MOCK_METHOD(std::string, sendMessage, (int, rapidjson::Document&), (override));
    MOCK_METHOD(void, sendResponse, (const std::string&, rapidjson::Document&), (override));
    MOCK_METHOD(void, registerMessageHandler, (int, std::function<void(const std::string&)>), (override));
};

/// `getValue` must set its output: `DoAll(SetArgReferee<1>("…"))`.
class MockStorage : public SDKWrapper::StorageManagerInterface {
public:
    MOCK_METHOD(void, getValue, (const std::string&, std::string&), (override));
    MOCK_METHOD(bool, setValue, (const std::string&, const std::string&), (override));
    MOCK_METHOD(bool, removeValue, (const std::string&), (override));
    MOCK_METHOD(bool, clearStorage, (), (override));
};

class MockMetrics : public Metrics::MetricsDelegateInterface {
public:
    MOCK_METHOD(void, recordEvent,
                (const std::string&, const std::string&, (const std::unordered_map<std::string, std::string>&)),
                (override));
    MOCK_METHOD(void, recordCounter, (const std::string&, int, int, double), (override));
};

class MockSdkBridge : public teskVessa::SDKBridgeInterface {
public:
    MOCK_METHOD(void, setHandsFreeEnabled, (bool), (override));
    MOCK_METHOD(bool, applySetting, (std::string, std::string), (override));
    MOCK_METHOD(void, setTimezone, (std::string), (override));
    MOCK_METHOD(std::string, getTimezone, (), (override));
    MOCK_METHOD(void, setLocales, (std::vector<std::string>), (override));
    MOCK_METHOD(std::vector<std::string>, getLocales, (), (override));
    MOCK_METHOD(bool, isCaptionsEnabled, (), (override));
    MOCK_METHOD(bool, isDoNotDisturbEnabled, (), (override));
};

class MockAppLaunch : public DeviceAbstractionLayer::AppLaunch {
public:
    MOCK_METHOD(bool, launchApp, (std::string, std::string), (override));
};

class MockDeviceInfo : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    MOCK_METHOD((std::map<std::string, std::string>), getDeviceInfo, (), (override));
};

class MockLocaleObserver : public VessaNativeCommon::OrliaLocaleObserverInterface {
public:
    MOCK_METHOD(void, notifyOrliaLocaleChanged, (const std::string&), (override));
};

/// The notifications of one locale and of several have the same name; distinguish them with `Matcher<std::string>` and
/// `Matcher<std::vector<std::string>>`.
class MockDeviceInfoObserver : public DeviceAbstractionLayer::DeviceInfoObserverInterface {
public:
    MOCK_METHOD(void, notifyLocaleChange, (std::string), (override));
    MOCK_METHOD(void, notifyLocaleChange, (std::vector<std::string>), (override));
    MOCK_METHOD(void, notifyTimezoneChange, (std::string), (override));
    MOCK_METHOD(void, notifyNetworkConnectionChanged, (std::string), (override));
    MOCK_METHOD(void, notifyMicrophoneAvailabilityChanged, (std::string), (override));
    MOCK_METHOD(void, notifyAudioGuidanceChanged, (bool), (override));
    MOCK_METHOD(void, notifyDeviceModeChanged, (std::string), (override));
    MOCK_METHOD(void, notifySystemSettingChanged, (std::string, std::string), (override));
};

class MockHandsfreeStateObserver : public DeviceAbstractionLayer::HandsfreeStateObserverInterface {
public:
    MOCK_METHOD(void, notifyHandsfreeStateChanged, (bool), (override));
};

class MockFriendlyNameObserver : public VessaNativeCommon::FriendlyNameObserverInterface {
public:
    MOCK_METHOD(void, notifyFriendlyNameChanged, (const std::string&), (override));
};

class MockEntitlementObserver : public teskVessa::NativeBridgeInterface {
public:
    MOCK_METHOD(void, notifyEntitlementStatusChanged, (const std::string&), (override));
};

}  // namespace SettingsHandlerTesting
