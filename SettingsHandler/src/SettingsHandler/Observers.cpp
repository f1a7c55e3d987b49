#include "Logging.h"
#include "Metrics/MetricsCache.h"
#include "SettingsHandler/SettingsHandler.h"

namespace SettingsHandler {

namespace {

/// Logs that `operation` was called with a null observer.
void logNullObserver(const char* operation) {
    logWarning(logTag, "%s: Given observer is null", operation);
}

template <typename Registry>
void add(Registry& registry, std::mutex& mutex, const typename Registry::value_type& observer, const char* operation) {
    if (!observer) {
        logNullObserver(operation);
        return;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    registry.insert(observer);
}

template <typename Registry>
void remove(Registry& registry, std::mutex& mutex, const typename Registry::value_type& observer,
            const char* operation) {
    if (!observer) {
        logNullObserver(operation);
        return;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    registry.erase(observer);
}

/// A copy of the registry, to call the observers without the lock. It keeps them alive until all were called.
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
    add(orliaLocaleObservers, settingsCacheMutex, observer, "addOrliaLocaleObserver");
}

void SettingsHandler::addFriendlyNameObserver(
    std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer) {
    add(friendlyNameObservers, settingsCacheMutex, observer, "addFriendlyNameObserver");
}

void SettingsHandler::removeFriendlyNameObserver(
    std::shared_ptr<VessaNativeCommon::FriendlyNameObserverInterface> observer) {
    remove(friendlyNameObservers, settingsCacheMutex, observer, "removeFriendlyNameObserver");
}

void SettingsHandler::addEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) {
    add(entitlementStatusObservers, settingsCacheMutex, observer, "addEntitlementStatusObserver");
}

void SettingsHandler::removeEntitlementStatusObserver(std::shared_ptr<teskVessa::NativeBridgeInterface> observer) {
    remove(entitlementStatusObservers, settingsCacheMutex, observer, "removeEntitlementStatusObserver");
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
