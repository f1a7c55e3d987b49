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

/// Owns the assistant settings: answers the pages' requests, takes the device's notifications, tells pages and
/// observers of every change.
///
/// Wiring order: make the collaborators, `create`, `initializeSettings`, `migrateExistingDeviceSettings` where older
/// software may have left values, subscribe the handler to the device layer, add observers, let the transport deliver.
/// Stop the transport and the device layer before dropping the handler: the registered callbacks hold its raw address.
///
///     auto handler = SettingsHandler::SettingsHandler::create(transport, storage, metrics, bridge, launcher, info);
///     handler->initializeSettings();
///     handler->migrateExistingDeviceSettings();
///     deviceLayer.subscribe(handler);
///     handler->addFriendlyNameObserver(announcer);
///     transport->start();
///
/// The handler has no thread, timer or queue of its own. Requests run on the transport's thread, which delivers them
/// one at a time; notifications run on the device layer's.
class [[gnu::visibility("default")]] SettingsHandler : public SettingsHandlerInterface {
public:
    /// Makes a handler and logs "Initialized Settings Handler" at level 0. The arguments are the constructor's.
    /// Returns: never null. Errors: exceptions of the transport's registration and of memory allocation pass.
    static std::shared_ptr<SettingsHandler> create(
        std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
        SDKWrapper::StorageManagerInterface & storage, std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
        std::shared_ptr<teskVessa::SDKBridgeInterface> bridge,
        std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
        std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info);

    /// Registers the five request handlers with `transport` and does nothing else: no reading, no writing, no log line.
    /// None of the collaborators may be null. Lifetime: shares them, but `storage` is the caller's and must outlive
    /// the handler.
    SettingsHandler(std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport,
                    SDKWrapper::StorageManagerInterface & storage,
                    std::shared_ptr<Metrics::MetricsDelegateInterface> metrics,
                    std::shared_ptr<teskVessa::SDKBridgeInterface> bridge,
                    std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
                    std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info);

    SettingsHandler(const SettingsHandler&) = delete;
    SettingsHandler& operator=(const SettingsHandler&) = delete;

    /// Leaves the transport's registrations in place, so the transport must not deliver any more.
    ~SettingsHandler() override;

    /// Each notification runs on the thread that gives it, and takes no lock but those of `setSetting`. Exceptions of
    /// the voice SDK, and for the last two those of `setSetting`, pass to the notifier.
    ///
    /// Makes `locale` the voice SDK's only locale unless it is already the primary one. The cache and the locale
    /// observers are not touched: the voice SDK reports the change in its own way.
    void notifyLocaleChange(std::string locale) override;
    /// Hands the whole list to the voice SDK, without comparing or checking it.
    void notifyLocaleChange(std::vector<std::string> locales) override;
    /// Hands `timezone` to the voice SDK, without a check or a log line.
    void notifyTimezoneChange(std::string timezone) override;
    /// Ignored, like the three below.
    void notifyNetworkConnectionChanged(std::string connection) override;
    void notifyMicrophoneAvailabilityChanged(std::string availability) override;
    void notifyAudioGuidanceChanged(bool enabled) override;
    void notifyDeviceModeChanged(std::string mode) override;
    /// Writes the setting through `setSetting`, whose answer is not looked at. `name`: a setting key. `value`: what
    /// `setSetting` takes; a locale that is JSON but no array ends the process here too.
    void notifySystemSettingChanged(std::string name, std::string value) override;
    /// Writes "handsFreeEnabled" through `setSetting`.
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

    /// Answers a GetSettings request: `{"settings": {key: value, …}}`. `message`: the request's JSON text, read up to
    /// its first NUL character. A bad request is logged at level 3 and not answered. Threads: the transport's, like all
    /// five request handlers.
    void handleGetSettingsRequest(const std::string& message);

    /// Serves a SetSettings request: checks it, applies the ordering rule and calls `setSetting`. It is never answered;
    /// an accepted change is seen by its event. Returns: what `setSetting` answered; false when it was not called.
    bool handleSetSettingRequest(const std::string& message);

    /// Answers `{"isOrliaSelectedAsVA": true}`. A request without a usable message id is logged and not answered.
    void handleIsOrliaSelectedVARequest(const std::string& message);

    /// Opens the assistant's settings application, whatever `message` holds.
    void handleOpenVASettingsRequest(const std::string& message);

    /// Switches the always-on modes and hands-free off, clears the storage and reloads the cache. No event, observer or
    /// metric follows. A storage that cannot be cleared is logged at level 3, and the rest is done all the same.
    /// Locks: none; the cache is replaced without its mutex, so no other thread may use the handler meanwhile.
    void handleLogOutRequest();

protected:
    /// Is `type` owned by the voice SDK? True for locale, captions on/off, do-not-disturb and time zone.
    static bool isSDKSetting(SettingsNamesType type);

    /// The current value of a setting that the voice SDK owns; the empty string for any other, without asking the SDK.
    std::string getSDKSetting(SettingsNamesType type);

    /// Reports a change that was made: updates the cache, sends the event, emits the metrics. Equal values are reported
    /// too. Locks: the cache's mutex for the update only.
    void settingChanged(const std::string& settingName, std::string& oldValue, const std::string& newValue);

    /// Counts a change under the name `settingName` + "_" + `value`, as a counter and then as an event. Locks: none.
    void emitSettingMetric(const std::string& settingName, const std::string& value);

    /// The compact JSON text of an array of `values`.
    std::string stringifyVector(const std::vector<std::string>& values);

    /// Records the primary locale for the metrics of the process, then tells the locale observers of it. `locales`: at
    /// least one.
    void onOrliaLocaleChange(std::vector<std::string> locales);
    /// Tells the observers of the friendly name. Locks: the cache's mutex for the copy of the registry, like the one
    /// above and the one below; none while an observer is called.
    void onFriendlyNameChanged(const std::string& friendlyName);
    /// Logs the entitlement status at level 1 and tells its observers, as it was given.
    void onEntitlementStatusChanged(const std::string& status);

    /// Launches the assistant's settings application. Its name is looked up by the first call of the process and kept.
    void openVASettings();
    /// True, always.
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
    /// Newest accepted request per setting. Only the transport's thread touches it.
    std::map<SettingsNamesType, long> lastRequestTimestamps;
    /// Last known value by setting key.
    std::map<std::string, std::string> settingsCache;
    /// Guards the cache and the observers. Not recursive.
    std::mutex settingsCacheMutex;
    std::unordered_set<std::shared_ptr<VessaNativeCommon::OrliaLocaleObserverInterface>> orliaLocaleObservers;
    std::unordered_set<std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface>> friendlyNameObservers;
    std::unordered_set<std::shared_ptr<teskVessa::NativeBridgeInterface>> entitlementStatusObservers;
};

}  // namespace SettingsHandler
