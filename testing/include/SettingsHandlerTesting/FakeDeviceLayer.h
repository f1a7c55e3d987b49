#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "DeviceAbstractionLayer/DeviceInfoObserverInterface.h"
#include "DeviceAbstractionLayer/HandsfreeStateObserverInterface.h"
#include "SettingsHandlerTesting/FakeDevice.h"

namespace SettingsHandlerTesting {

/// The part of a device that tells its observers of what a person does there. It has no entries: what the handler makes
/// of a notification is in the journal.
///
///     FakeDeviceLayer layer(deviceInfo);
///     layer.subscribe(handler, handler);
///     layer.changeLocale("fr-FR");
///
/// Threads: the observers are called on the calling thread. Subscribe before other threads use the layer.
///
/// Unlike a real one it has no thread of its own, keeps no state but the hands-free switch, and repeats what was said
/// before as often as it is told to. It does not keep its observers alive, and goes on when they are gone.
class FakeDeviceLayer {
public:
    /// Hands-free is switched in `deviceInfo`, too.
    explicit FakeDeviceLayer(std::shared_ptr<FakeDeviceInfo> deviceInfo) : info(std::move(deviceInfo)) {}

    /// Tells both of what happens from now on. A handler is both.
    void subscribe(const std::shared_ptr<DeviceAbstractionLayer::DeviceInfoObserverInterface>& observer,
                   const std::shared_ptr<DeviceAbstractionLayer::HandsfreeStateObserverInterface>& handsfreeObserver) {
        observers.push_back(observer);
        handsfreeObservers.push_back(handsfreeObserver);
    }

    /// Tells the observers of what happened at the device; an observer that is gone is left out.
    /// @{
    void changeLocale(const std::string& locale) {
        tell([&](auto& observer) { observer.notifyLocaleChange(locale); });
    }
    void changeLocales(const std::vector<std::string>& locales) {
        tell([&](auto& observer) { observer.notifyLocaleChange(locales); });
    }
    void changeTimezone(const std::string& timezone) {
        tell([&](auto& observer) { observer.notifyTimezoneChange(timezone); });
    }
    void changeNetworkConnection(const std::string& connection) {
        tell([&](auto& observer) { observer.notifyNetworkConnectionChanged(connection); });
    }
    void changeMicrophoneAvailability(const std::string& availability) {
        tell([&](auto& observer) { observer.notifyMicrophoneAvailabilityChanged(availability); });
    }
    void changeAudioGuidance(bool enabled) {
        tell([&](auto& observer) { observer.notifyAudioGuidanceChanged(enabled); });
    }
    void changeDeviceMode(const std::string& mode) {
        tell([&](auto& observer) { observer.notifyDeviceModeChanged(mode); });
    }
    void changeSystemSetting(const std::string& name, const std::string& value) {
        tell([&](auto& observer) { observer.notifySystemSettingChanged(name, value); });
    }
    /// @}

    /// Switches hands-free in the device information, then tells.
    void switchHandsFree(bool enabled) {
        info->switchMode(handsFreeMode, enabled);
        for (const auto& waiting : handsfreeObservers) {
            if (const auto observer = waiting.lock()) {
                observer->notifyHandsfreeStateChanged(enabled);
            }
        }
    }

private:
    template <typename Notification>
    void tell(const Notification& notification) {
        for (const auto& waiting : observers) {
            if (const auto observer = waiting.lock()) {
                notification(*observer);
            }
        }
    }

    std::shared_ptr<FakeDeviceInfo> info;
    std::vector<std::weak_ptr<DeviceAbstractionLayer::DeviceInfoObserverInterface>> observers;
    std::vector<std::weak_ptr<DeviceAbstractionLayer::HandsfreeStateObserverInterface>> handsfreeObservers;
};

}  // namespace SettingsHandlerTesting
