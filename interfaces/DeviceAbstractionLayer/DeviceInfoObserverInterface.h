#pragma once

#include <string>
#include <vector>

namespace DeviceAbstractionLayer {

/// An observer of the device. The handler implements it; the device abstraction layer calls it.
///
/// Threads: any, after `initializeSettings` and before the handler is destroyed.
/// Errors: an exception of the observer leaves the notification.
///
/// The order of the operations is part of the binary interface. Arguments are passed by value: the observer may keep
/// them.
class [[gnu::visibility("default")]] DeviceInfoObserverInterface {
public:
    /// The device's locale is now `locale`, for example "fr-FR".
    virtual void notifyLocaleChange(std::string locale) = 0;
    /// The device's locales are now `locales`, the primary one first.
    virtual void notifyLocaleChange(std::vector<std::string> locales) = 0;
    /// The device's time zone is now `timezone`, for example "Europe/Paris".
    virtual void notifyTimezoneChange(std::string timezone) = 0;
    /// The network connection changed.
    virtual void notifyNetworkConnectionChanged(std::string connection) = 0;
    /// The microphone became available or unavailable.
    virtual void notifyMicrophoneAvailabilityChanged(std::string availability) = 0;
    /// Spoken guidance was switched on or off.
    virtual void notifyAudioGuidanceChanged(bool enabled) = 0;
    /// The device went into another mode.
    virtual void notifyDeviceModeChanged(std::string mode) = 0;
    /// The system setting `name` now has the value `value`.
    virtual void notifySystemSettingChanged(std::string name, std::string value) = 0;

    virtual ~DeviceInfoObserverInterface() = default;
};

}  // namespace DeviceAbstractionLayer
