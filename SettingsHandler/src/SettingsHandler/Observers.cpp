#include "Logging.h"
#include "Metrics/MetricsCache.h"
#include "SettingsHandler/SettingsHandler.h"

namespace SettingsHandler {

namespace {

/// A copy to call the observers from without the lock; it keeps every observer alive until the pass is over.
template <typename Registry>
Registry snapshotOf(const Registry& registry, std::mutex& mutex) {
    Registry snapshot;
    const std::lock_guard<std::mutex> lock(mutex);
    snapshot = registry;
    return snapshot;
}

}  // namespace

void SettingsHandler::addOrliaLocaleObserver(
    std::shared_ptr<VessaNativeCommon::OrliaLocaleObserverInterface> observer) {
    if (!observer) {
        logWarning(logTag, "addOrliaLocaleObserver: Given observer is null");
        return;
    }
    const std::lock_guard<std::mutex> lock(settingsCacheMutex);
    orliaLocaleObservers.insert(observer);
}

void SettingsHandler::addFriendlyNameObserver(
    std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer) {
    if (!observer) {
        logWarning(logTag, "addFriendlyNameObserver: Given observer is null");
        return;
    }
    const std::lock_guard<std::mutex> lock(settingsCacheMutex);
    friendlyNameObservers.insert(observer);
}

void SettingsHandler::removeFriendlyNameObserver(
    std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer) {
    if (!observer) {
        logWarning(logTag, "removeFriendlyNameObserver: Given observer is null");
        return;
    }
    const std::lock_guard<std::mutex> lock(settingsCacheMutex);
    friendlyNameObservers.erase(observer);
}

void SettingsHandler::addEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) {
    if (!observer) {
        logWarning(logTag, "addEntitlementStatusObserver: Given observer is null");
        return;
    }
    const std::lock_guard<std::mutex> lock(settingsCacheMutex);
    entitlementStatusObservers.insert(observer);
}

void SettingsHandler::removeEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) {
    if (!observer) {
        logWarning(logTag, "removeEntitlementStatusObserver: Given observer is null");
        return;
    }
    const std::lock_guard<std::mutex> lock(settingsCacheMutex);
    entitlementStatusObservers.erase(observer);
}

void SettingsHandler::onOrliaLocaleChange(std::vector<std::string> locales) {
    metricsCache.setOrliaLocale(locales[0]);
    for (const auto& observer : snapshotOf(orliaLocaleObservers, settingsCacheMutex)) {
        observer->notifyOrliaLocaleChanged(locales[0]);
    }
}

void SettingsHandler::onFriendlyNameChanged(const std::string& friendlyName) {
    for (const auto& observer : snapshotOf(friendlyNameObservers, settingsCacheMutex)) {
        observer->notifyFriendlyNameChanged(friendlyName);
    }
}

void SettingsHandler::onEntitlementStatusChanged(const std::string& status) {
    logInformation(logTag, "onEntitlementStatusChanged: %s", status.c_str());
    for (const auto& observer : snapshotOf(entitlementStatusObservers, settingsCacheMutex)) {
        observer->notifyEntitlementStatusChanged(status);
    }
}

}  // namespace SettingsHandler
