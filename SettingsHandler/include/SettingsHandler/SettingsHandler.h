#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "DeviceAbstractionLayer/AppLaunch.h"
#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "Metrics/MetricsDelegateInterface.h"
#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandler/SettingsHandlerInterface.h"
#include "SettingsHandler/SettingsNames.h"
#include "teskVessa/SDKBridgeInterface.h"

namespace SettingsHandler {

/// Manages the assistant settings: replies to the requests of clients, takes the notifications of the device layer, and
/// reports every change to clients and observers.
///
/// Start: make the collaborators; call `create`, `initializeSettings` and, where older software may have left values,
/// `migrateExistingDeviceSettings`; subscribe the handler to the device layer; add observers; start the transport.
/// Stop: stop the transport and the device layer before you release the handler, because the registered callbacks hold
/// its raw address.
///
///     auto handler = SettingsHandler::SettingsHandler::create(transport, storage, metrics, bridge, launcher, info);
///     handler->initializeSettings();
///     handler->migrateExistingDeviceSettings();
///     deviceLayer.subscribe(handler);
///     handler->addFriendlyNameObserver(announcer);
///     transport->start();
///
/// Threads: the handler has no thread, timer or queue of its own. Requests run on the transport's thread, which
/// delivers them one at a time; notifications run on the device layer's.
class [[gnu::visibility("default")]] SettingsHandler : public SettingsHandlerInterface {
public:
    /// Makes a handler and logs "Initialized Settings Handler" at level 0. The arguments are those of the constructor.
    /// - Returns: never null.
    /// - Errors: exceptions of the transport's registration and of memory allocation pass.
    static std::shared_ptr<SettingsHandler> create(
        std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
        SDKWrapper::StorageManagerInterface & storage, std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
        std::shared_ptr<teskVessa::SDKBridgeInterface> bridge,
        std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
        std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info);

    /// Registers the five request handlers with `transport`. It reads, writes and logs nothing.
    ///
    /// No collaborator may be null. The handler shares them; only `storage` stays the caller's and must outlive the
    /// handler.
    SettingsHandler(std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
                    SDKWrapper::StorageManagerInterface & storage,
                    std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
                    std::shared_ptr<teskVessa::SDKBridgeInterface> bridge,
                    std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
                    std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info);

    SettingsHandler(const SettingsHandler&) = delete;
    SettingsHandler& operator=(const SettingsHandler&) = delete;

    /// Does not unregister the request handlers: the transport must not deliver any more.
    ~SettingsHandler() override;

    /// Sets `locale` as the only locale of the voice SDK, unless it is the primary one already. No event is sent; cache
    /// and locale observers stay as they are.
    ///
    /// For all notifications: they run on the calling thread and take no lock, except those that call `setSetting`.
    /// Exceptions of the voice SDK and of `setSetting` pass to the caller.
    void notifyLocaleChange(std::string locale) override;
    /// Passes the whole list to the voice SDK, without comparing or checking it.
    void notifyLocaleChange(std::vector<std::string> locales) override;
    /// Passes `timezone` to the voice SDK, without a check or a log line.
    void notifyTimezoneChange(std::string timezone) override;
    /// Does nothing, like the three operations below.
    void notifyNetworkConnectionChanged(std::string connection) override;
    void notifyMicrophoneAvailabilityChanged(std::string availability) override;
    void notifyAudioGuidanceChanged(bool enabled) override;
    void notifyDeviceModeChanged(std::string mode) override;
    /// Calls `setSetting` and ignores its result. `name` and `value`: as for `setSetting`; a locale that is JSON but
    /// not an array ends the process here too.
    void notifySystemSettingChanged(std::string name, std::string value) override;
    /// Sets "handsFreeEnabled" through `setSetting`.
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

    /// Handles a GetSettings request. The reply is `{"settings": {key: value, …}}`; a malformed request is logged at
    /// level 3 and gets no reply.
    ///
    /// For all five request handlers:
    /// - `message`: the JSON text of the request, read up to its first NUL character.
    /// - Threads: the transport's only. Locks: those of the operations that they call.
    void handleGetSettingsRequest(const std::string& message);

    /// Handles a SetSettings request: checks it, then its time stamp with `isRequestValid`, then calls `setSetting`.
    /// There is no reply; a change is reported by its event.
    /// - Returns: the result of `setSetting`; false when it was not called.
    bool handleSetSettingRequest(const std::string& message);

    /// Replies `{"isOrliaSelectedAsVA": true}`. A request without a usable message id is logged at level 3 and gets no
    /// reply.
    void handleIsOrliaSelectedVARequest(const std::string& message);

    /// Opens the assistant's settings application. `message` is not read.
    void handleOpenVASettingsRequest(const std::string& message);

    /// Handles a log-out: switches the always-on modes and hands-free off, clears the storage and reloads the cache. It
    /// sends no event, notifies no observer and records no metric.
    /// - Errors: a storage that cannot be cleared is logged at level 3, and the cache is reloaded all the same.
    /// - Locks: none. The cache is replaced without the mutex: no other thread may use the handler meanwhile.
    void handleLogOutRequest();

protected:
    /// Returns: whether the voice SDK owns `type`: locale, captions on/off, do-not-disturb and time zone.
    static bool isSDKSetting(SettingsNamesType type);

    /// Returns: the current value of a setting that the voice SDK owns; for any other the empty string, without a call
    /// of the SDK.
    std::string getSDKSetting(SettingsNamesType type);

    /// Reports a change: updates the cache, sends the event, records the metrics. Equal values are reported too.
    /// Locks: the cache mutex for the update only.
    void settingChanged(const std::string& settingName, std::string& oldValue, const std::string& newValue);

    /// Records the metric `settingName` + "_" + `value`, first as a counter, then as an event. Locks: none.
    void emitSettingMetric(const std::string& settingName, const std::string& value);

    /// Returns: the compact JSON text of an array of `values`.
    std::string stringifyVector(const std::vector<std::string>& values);

    /// Sets the primary locale in the metrics cache of the process, then notifies the locale observers. `locales`: at
    /// least one.
    ///
    /// For all three: Locks: the cache mutex to copy the list of observers; none while an observer is called.
    void onOrliaLocaleChange(std::vector<std::string> locales);
    /// Notifies the observers of the friendly name.
    void onFriendlyNameChanged(const std::string& friendlyName);
    /// Logs the entitlement status at level 1 and notifies its observers of the unchanged text.
    void onEntitlementStatusChanged(const std::string& status);

    /// Launches the assistant's settings application. The first call in the process looks its name up; later calls
    /// reuse it.
    void openVASettings();
    /// Returns: always true.
    bool isOrliaSelectedAsVA();

private:
    [[gnu::visibility("hidden")]] bool setOrliaLocale(const std::string& settingDBId, const std::string& value);
    [[gnu::visibility("hidden")]] bool setTimezone(const std::string& settingDBId, const std::string& value);
    [[gnu::visibility("hidden")]] bool setEntitlementStatus(const std::string& settingDBId, const std::string& value);
    [[gnu::visibility("hidden")]] bool setAppliedSetting(SettingsNamesType type, const std::string& settingDBId,
                                                         const std::string& value);
    [[gnu::visibility("hidden")]] bool setStoredSetting(const std::string& settingDBId, const std::string& value);
    [[gnu::visibility("hidden")]] std::string cachedValue(const std::string& settingDBId);
    [[gnu::visibility("hidden")]] void readInto(std::map<std::string, std::string> & values,
                                                const std::string& settingDBId);
    [[gnu::visibility("hidden")]] std::string readSetting(SettingsNamesType type, const std::string& settingDBId);
    [[gnu::visibility("hidden")]] std::string readStoredSetting(SettingsNamesType type, const std::string& settingDBId);
    [[gnu::visibility("hidden")]] std::string readDeviceMode(const std::string& deviceInfoKey);

    std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> communicationHandler;
    SDKWrapper::StorageManagerInterface& storageManager;
    std::shared_ptr<Metrics::MetricsDelegateInterface> metricsDelegate;
    std::shared_ptr<teskVessa::SDKBridgeInterface> sdkBridge;
    std::shared_ptr<DeviceAbstractionLayer::AppLaunch> appLaunch;
    std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> deviceInfo;
    /// Newest accepted request per setting. Used on the transport's thread only.
    std::map<SettingsNamesType, long> lastRequestTimestamps;
    /// Last known values, by key.
    std::map<std::string, std::string> settingsCache;
    /// The cache mutex: guards the cache and the observers. Not recursive.
    std::mutex settingsCacheMutex;
    std::unordered_set<std::shared_ptr<VessaNativeCommon::OrliaLocaleObserverInterface>> orliaLocaleObservers;
    std::unordered_set<std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface>> friendlyNameObservers;
    std::unordered_set<std::shared_ptr<teskVessa::NativeBridgeInterface>> entitlementStatusObservers;
};

}  // namespace SettingsHandler
