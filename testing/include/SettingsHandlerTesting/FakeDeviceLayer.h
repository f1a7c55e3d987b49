#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "DeviceAbstractionLayer/DeviceInfoObserverInterface.h"
#include "DeviceAbstractionLayer/HandsfreeStateObserverInterface.h"
#include "SettingsHandlerTesting/FakeDevice.h"

namespace SettingsHandlerTesting {

/// The part of a device that notifies observers of changes. It records no entries; the effects of a notification on the
/// handler are in the journal.
///
///     FakeDeviceLayer layer(deviceInfo);
///     layer.subscribe(handler, handler);
///     layer.changeLocale("fr-FR");
///
/// Threads: the observers are called on the calling thread. Subscribe before other threads use the layer.
///
/// Differences from a real one: it has no thread, keeps no state but the hands-free switch, and repeats a
/// notification as often as a test asks. It does not keep its observers alive; it skips those that are destroyed.
class FakeDeviceLayer {
public:
    /// Hands-free is switched in `deviceInfo` too.
    explicit FakeDeviceLayer(std::shared_ptr<FakeDeviceInfo> deviceInfo) : info(std::move(deviceInfo)) {}

    /// Notifies both observers from now on. A handler is both.
    void subscribe(const std::shared_ptr<DeviceAbstractionLayer::DeviceInfoObserverInterface>& observer,
                   const std::shared_ptr<DeviceAbstractionLayer::HandsfreeStateObserverInterface>& handsfreeObserver) {
        observers.push_back(observer);
        handsfreeObservers.push_back(handsfreeObserver);
    }

    /// Notifies the observers of a change at the device.
    /// @{
    void changeLocale(const std::string& locale) {
        notify([&](auto& observer) { observer.notifyLocaleChange(locale); });
    }
    void changeLocales(const std::vector<std::string>& locales) {
        notify([&](auto& observer) { observer.notifyLocaleChange(locales); });
    }
    void changeTimezone(const std::string& timezone) {
        notify([&](auto& observer) { observer.notifyTimezoneChange(timezone); });
    }
    void changeNetworkConnection(const std::string& connection) {
        notify([&](auto& observer) { observer.notifyNetworkConnectionChanged(connection); });
    }
    void changeMicrophoneAvailability(const std::string& availability) {
        notify([&](auto& observer) { observer.notifyMicrophoneAvailabilityChanged(availability); });
    }
    void changeAudioGuidance(bool enabled) {
        notify([&](auto& observer) { observer.notifyAudioGuidanceChanged(enabled); });
    }
    void changeDeviceMode(const std::string& mode) {
        notify([&](auto& observer) { observer.notifyDeviceModeChanged(mode); });
    }
    void changeSystemSetting(const std::string& name, const std::string& value) {
        notify([&](auto& observer) { observer.notifySystemSettingChanged(name, value); });
    }
    /// @}

    /// Switches hands-free in the device information, then notifies the observers.
    void switchHandsFree(bool enabled) {
        info->switchMode(handsFreeMode, enabled);
        for (const auto& subscribed : handsfreeObservers) {
            if (const auto observer = subscribed.lock()) {
                observer->notifyHandsfreeStateChanged(enabled);
            }
        }
    }

private:
    template <typename Notification>
    void notify(const Notification& notification) {
        for (const auto& subscribed : observers) {
            if (const auto observer = subscribed.lock()) {
                notification(*observer);
            }
        }
    }

    std::shared_ptr<FakeDeviceInfo> info;
    std::vector<std::weak_ptr<DeviceAbstractionLayer::DeviceInfoObserverInterface>> observers;
    std::vector<std::weak_ptr<DeviceAbstractionLayer::HandsfreeStateObserverInterface>> handsfreeObservers;
};

}  // namespace SettingsHandlerTesting
