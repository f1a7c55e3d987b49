#pragma once

// The public headers as version 1.0 had them, without comments. What is here stays as it is for all of version 1; what
// a later version adds is added here when it is released. docs/abi.md says what is an addition.

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Utils/Rapidjson.h"

namespace CommunicationHandler {
enum MessageType : int {
    GET_SETTINGS = 7,
    IS_ORLIA_SELECTED_VA = 18,
    OPEN_VA_SETTINGS = 19,
    LOG_OUT = 22,
    SET_SETTINGS = 24,
    SETTING_CHANGED = 25,
};
}

namespace CommunicationHandler {
class [[gnu::visibility("default")]] CommunicationHandlerInterface {
public:
    CommunicationHandlerInterface(const CommunicationHandlerInterface&) = delete;
    CommunicationHandlerInterface& operator=(const CommunicationHandlerInterface&) = delete;
    const std::string messageIdKey;
    const std::string timestampKey;
    const std::string payloadKey;

protected:
    explicit CommunicationHandlerInterface(std::string messageIdKeyName = "messageId",
                                           std::string timestampKeyName = "timestamp",
                                           std::string payloadKeyName = "payload")
        : messageIdKey(std::move(messageIdKeyName)),
          timestampKey(std::move(timestampKeyName)),
          payloadKey(std::move(payloadKeyName)) {}
    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual void reserved3() {}
    virtual void reserved4() {}

public:
    virtual std::string sendMessage(int messageType, rapidjson::Document& payload) = 0;
    virtual void sendResponse(const std::string& messageId, rapidjson::Document& payload) = 0;
    virtual void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) = 0;
    virtual ~CommunicationHandlerInterface() = default;
};
}  // namespace CommunicationHandler

namespace DeviceAbstractionLayer {
class [[gnu::visibility("default")]] AppLaunch {
public:
    virtual bool launchApp(std::string appName, std::string argument) = 0;
    virtual ~AppLaunch() = default;
};

enum class AppName : std::int32_t {
    VA_SETTINGS_APP = 6,
};
[[gnu::visibility("default")]] extern std::unordered_map<AppName, std::string> AppNameToStringMapping;

class [[gnu::visibility("default")]] DeviceInfoObserverInterface {
public:
    virtual void notifyLocaleChange(std::string locale) = 0;
    virtual void notifyLocaleChange(std::vector<std::string> locales) = 0;
    virtual void notifyTimezoneChange(std::string timezone) = 0;
    virtual void notifyNetworkConnectionChanged(std::string connection) = 0;
    virtual void notifyMicrophoneAvailabilityChanged(std::string availability) = 0;
    virtual void notifyAudioGuidanceChanged(bool enabled) = 0;
    virtual void notifyDeviceModeChanged(std::string mode) = 0;
    virtual void notifySystemSettingChanged(std::string name, std::string value) = 0;
    virtual ~DeviceInfoObserverInterface() = default;
};

class [[gnu::visibility("default")]] HandsfreeStateObserverInterface {
public:
    virtual void notifyHandsfreeStateChanged(bool enabled) = 0;
    virtual ~HandsfreeStateObserverInterface() = default;
};

class [[gnu::visibility("default")]] OrliaDeviceInfoInterface {
protected:
    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual void reserved3() {}
    virtual void reserved4() {}
    virtual void reserved5() {}
    virtual void reserved6() {}
    virtual void reserved7() {}
    virtual void reserved8() {}

public:
    virtual std::map<std::string, std::string> getDeviceInfo() = 0;
    virtual ~OrliaDeviceInfoInterface() = default;
};
}  // namespace DeviceAbstractionLayer

namespace Metrics {
class [[gnu::visibility("default")]] MetricsCache {
public:
    MetricsCache(const MetricsCache&) = delete;
    MetricsCache& operator=(const MetricsCache&) = delete;
    static MetricsCache& instance();
    void setOrliaLocale(const std::string& locale);

private:
    MetricsCache() = default;
    ~MetricsCache() = default;
};

class [[gnu::visibility("default")]] MetricsDelegateInterface {
protected:
    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual void reserved3() {}

public:
    virtual void recordEvent(const std::string& group, const std::string& source,
                             const std::unordered_map<std::string, std::string>& attributes) = 0;
    virtual void recordCounter(const std::string& name, int first, int second, double third) = 0;
    virtual ~MetricsDelegateInterface() = default;
};
}  // namespace Metrics

namespace SDKWrapper {
class [[gnu::visibility("default")]] StorageManagerInterface {
protected:
    virtual void reserved1() {}
    virtual void reserved2() {}

public:
    virtual void getValue(const std::string& key, std::string& value) = 0;
    virtual bool setValue(const std::string& key, const std::string& value) = 0;

protected:
    virtual void reserved5() {}
    virtual void reserved6() {}

public:
    virtual bool removeValue(const std::string& key) = 0;

protected:
    virtual void reserved8() {}

public:
    virtual bool clearStorage() = 0;
    virtual ~StorageManagerInterface() = default;
};
}  // namespace SDKWrapper

namespace Utils::RapidjsonUtil {
[[gnu::visibility("default")]] bool tryGetObjectMember(rapidjson::Value& object, const std::string& key,
                                                       rapidjson::Value& out);
[[gnu::visibility("default")]] bool tryGetInt64Member(const rapidjson::Value& object, const std::string& key,
                                                      long& out);
[[gnu::visibility("default")]] bool tryGetStringMember(const rapidjson::Value& object, const std::string& key,
                                                       std::string& out);
[[gnu::visibility("default")]] bool tryGetValueArrayMember(rapidjson::Value& object, const std::string& key,
                                                           rapidjson::Value& out);
[[gnu::visibility("default")]] std::string stringify(const rapidjson::Value& value);
[[gnu::visibility("default")]] std::string stringifyVector(const std::vector<std::string>& values);
}  // namespace Utils::RapidjsonUtil

namespace VessaLogger {
enum LogLevel : int {
    TRACE = 0,
    INFORMATION = 1,
    WARNING = 2,
    ERROR = 3,
};
enum LogSource : int {
    NATIVE_SERVICE = 2,
};
class [[gnu::visibility("default")]] Log {
public:
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;
    static Log& instance();
    std::string getThreadId();
    void emitLog(LogLevel level, std::chrono::system_clock::time_point time, const std::string& threadId,
                 const std::string& text, LogSource source);

private:
    Log() = default;
    ~Log() = default;
};
}  // namespace VessaLogger

namespace VessaNativeCommon {
class [[gnu::visibility("default")]] FriendlyNameObserverInterface {
public:
    virtual void notifyFriendlyNameChanged(const std::string& friendlyName) = 0;
    virtual ~FriendlyNameObserverInterface() = default;
};

class [[gnu::visibility("default")]] OrliaLocaleObserverInterface {
public:
    virtual void notifyOrliaLocaleChanged(const std::string& locale) = 0;
    virtual ~OrliaLocaleObserverInterface() = default;
};
}  // namespace VessaNativeCommon

namespace teskVessa {
class [[gnu::visibility("default")]] NativeBridgeInterface {
protected:
    virtual void reserved1() {}
    virtual void reserved2() {}

public:
    virtual void notifyEntitlementStatusChanged(const std::string& status) = 0;
    virtual ~NativeBridgeInterface() = default;
};

class [[gnu::visibility("default")]] SDKBridgeInterface {
public:
    virtual void setHandsFreeEnabled(bool enabled) = 0;
    virtual bool applySetting(std::string settingDBId, std::string value) = 0;
    virtual void setTimezone(std::string timezone) = 0;
    virtual std::string getTimezone() = 0;
    virtual void setLocales(std::vector<std::string> locales) = 0;
    virtual std::vector<std::string> getLocales() = 0;

protected:
    virtual void reserved7() {}

public:
    virtual bool isCaptionsEnabled() = 0;

protected:
    virtual void reserved9() {}

public:
    virtual bool isDoNotDisturbEnabled() = 0;
    virtual ~SDKBridgeInterface() = default;
};
}  // namespace teskVessa

namespace SettingsHandler {
enum SettingsNamesType : std::int32_t {
    INVALID_SETTING = 0,
    DEVICE_NAME = 1,
    COMPANION_DEVICE = 2,
    ORLIA_LOCALE = 3,
    CAPTIONS_ENABLED = 4,
    CAPTIONS_FONT_SIZE = 5,
    CAPTIONS_STYLES = 6,
    DO_NOT_DISTURB_ENABLED = 7,
    HANDS_FREE_ENABLED = 8,
    HANDS_FREE_ALWAYS_ON_ENABLED = 9,
    HANDS_FREE_ALWAYS_ON_DISCOVERED = 10,
    PTT_ALWAYS_ON_ENABLED = 11,
    PTT_ALWAYS_ON_DISCOVERED = 12,
    FRIENDLY_NAME = 13,
    TOVAN_ENTITLEMENT_STATUS = 14,
    TIMEZONE = 15,
};
[[gnu::visibility("default")]] extern const std::unordered_map<std::string, SettingsNamesType>
    stringToSettingsNamesTypeMapping;
[[gnu::visibility("default")]] extern const std::unordered_map<SettingsNamesType, std::string>
    SettingsNamesTypeToStringMapping;
[[gnu::visibility("default")]] extern const std::unordered_map<SettingsNamesType, std::string>
    SettingsNamesTypeToDefaultValuesMapping;
[[gnu::visibility("default")]] std::string settingNameFromType(SettingsNamesType type);
[[gnu::visibility("default")]] SettingsNamesType settingTypeFromName(const std::string& name);
[[gnu::visibility("default")]] std::string defaultValueForSetting(SettingsNamesType type);

class [[gnu::visibility("default")]] SettingsHandlerInterface
    : public DeviceAbstractionLayer::DeviceInfoObserverInterface,
      public DeviceAbstractionLayer::HandsfreeStateObserverInterface {
public:
    virtual void initializeSettings() = 0;
    virtual std::map<std::string, std::string> getSettings(const std::vector<std::string>& names) = 0;
    virtual bool setSetting(const std::string& name, const std::string& value) = 0;
    virtual bool isRequestValid(std::string & settingDBId, long timestamp) = 0;
    virtual std::map<std::string, std::string> getCurrentSettingsMap() = 0;
    void notifyHandsfreeStateChanged(bool enabled) override = 0;
    virtual void addOrliaLocaleObserver(std::shared_ptr<VessaNativeCommon::OrliaLocaleObserverInterface> observer) = 0;
    virtual void addFriendlyNameObserver(
        std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer) = 0;
    virtual void removeFriendlyNameObserver(
        std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer) = 0;
    virtual void addEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) = 0;
    virtual void removeEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) = 0;
    virtual void migrateExistingDeviceSettings() = 0;
    ~SettingsHandlerInterface() override = default;
};

class [[gnu::visibility("default")]] SettingsHandler : public SettingsHandlerInterface {
public:
    static std::shared_ptr<SettingsHandler> create(
        std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
        SDKWrapper::StorageManagerInterface & storage, std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
        std::shared_ptr<teskVessa::SDKBridgeInterface> bridge,
        std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
        std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info);
    SettingsHandler(std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
                    SDKWrapper::StorageManagerInterface & storage,
                    std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
                    std::shared_ptr<teskVessa::SDKBridgeInterface> bridge,
                    std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
                    std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info);
    SettingsHandler(const SettingsHandler&) = delete;
    SettingsHandler& operator=(const SettingsHandler&) = delete;
    ~SettingsHandler() override;
    void notifyLocaleChange(std::string locale) override;
    void notifyLocaleChange(std::vector<std::string> locales) override;
    void notifyTimezoneChange(std::string timezone) override;
    void notifyNetworkConnectionChanged(std::string connection) override;
    void notifyMicrophoneAvailabilityChanged(std::string availability) override;
    void notifyAudioGuidanceChanged(bool enabled) override;
    void notifyDeviceModeChanged(std::string mode) override;
    void notifySystemSettingChanged(std::string name, std::string value) override;
    void notifyHandsfreeStateChanged(bool enabled) override;
    void initializeSettings() override;
    std::map<std::string, std::string> getSettings(const std::vector<std::string>& names) override;
    bool setSetting(const std::string& name, const std::string& value) override;
    bool isRequestValid(std::string & settingDBId, long timestamp) override;
    std::map<std::string, std::string> getCurrentSettingsMap() override;
    void addOrliaLocaleObserver(std::shared_ptr<VessaNativeCommon::OrliaLocaleObserverInterface> observer) override;
    void addFriendlyNameObserver(std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer) override;
    void removeFriendlyNameObserver(std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer)
        override;
    void addEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) override;
    void removeEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) override;
    void migrateExistingDeviceSettings() override;
    void handleGetSettingsRequest(const std::string& message);
    bool handleSetSettingRequest(const std::string& message);
    void handleIsOrliaSelectedVARequest(const std::string& message);
    void handleOpenVASettingsRequest(const std::string& message);
    void handleLogOutRequest();

protected:
    static bool isSDKSetting(SettingsNamesType type);
    std::string getSDKSetting(SettingsNamesType type);
    void settingChanged(const std::string& settingName, std::string& oldValue, const std::string& newValue);
    void emitSettingMetric(const std::string& settingName, const std::string& value);
    std::string stringifyVector(const std::vector<std::string>& values);
    void onOrliaLocaleChange(std::vector<std::string> locales);
    void onFriendlyNameChanged(const std::string& friendlyName);
    void onEntitlementStatusChanged(const std::string& status);
    void openVASettings();
    bool isOrliaSelectedAsVA();

private:
    std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> communicationHandler;
    SDKWrapper::StorageManagerInterface& storageManager;
    std::shared_ptr<Metrics::MetricsDelegateInterface> metricsDelegate;
    std::shared_ptr<teskVessa::SDKBridgeInterface> sdkBridge;
    std::shared_ptr<DeviceAbstractionLayer::AppLaunch> appLaunch;
    std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> deviceInfo;
    std::map<SettingsNamesType, long> lastRequestTimestamps;
    std::map<std::string, std::string> settingsCache;
    std::mutex settingsCacheMutex;
    std::unordered_set<std::shared_ptr<VessaNativeCommon::OrliaLocaleObserverInterface>> orliaLocaleObservers;
    std::unordered_set<std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface>> friendlyNameObservers;
    std::unordered_set<std::shared_ptr<teskVessa::NativeBridgeInterface>> entitlementStatusObservers;
};
}  // namespace SettingsHandler

// The libraries whose types cross the border, as version 1 was built with them.
#ifdef __x86_64__
static_assert(sizeof(std::string) == 32 && sizeof(std::vector<std::string>) == 24 && sizeof(std::mutex) == 40);
static_assert(sizeof(std::map<std::string, std::string>) == 48 &&
              sizeof(std::unordered_map<std::string, std::string>) == 56);
static_assert(sizeof(std::unordered_set<std::shared_ptr<int>>) == 56 && sizeof(std::shared_ptr<int>) == 16);
static_assert(sizeof(std::function<void(const std::string&)>) == 32 &&
              sizeof(std::chrono::system_clock::time_point) == 8);
static_assert(sizeof(rapidjson::Document) == 96 && sizeof(rapidjson::Value) == 16);
static_assert(sizeof(SettingsHandler::SettingsHandler) == 408);
#endif
