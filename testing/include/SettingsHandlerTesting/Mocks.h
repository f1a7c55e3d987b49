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

/// GoogleMock doubles of every collaborator and observer, for tests that expect single calls. Where the order of
/// everything matters, the fakes with their journal say it in fewer words.
///
/// Knobs: those of GoogleMock. Threads: as GoogleMock has it: expectations first, then calls from any thread.
///
/// Unlike the real things they hold nothing: without an `ON_CALL` a read answers false, an empty text or an empty
/// collection, and what was written is not read back.
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

/// A notification of one locale and one of several have the same name; tell them apart by `Matcher<std::string>` and
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
