#pragma once

namespace DeviceAbstractionLayer {

/// An observer of the device's hands-free switch. The handler implements it; the device abstraction layer calls it.
/// Threads and errors: as for `DeviceInfoObserverInterface`.
class [[gnu::visibility("default")]] HandsfreeStateObserverInterface {
public:
    /// Hands-free was switched on or off at the device.
    virtual void notifyHandsfreeStateChanged(bool enabled) = 0;

    virtual ~HandsfreeStateObserverInterface() = default;
};

}  // namespace DeviceAbstractionLayer
