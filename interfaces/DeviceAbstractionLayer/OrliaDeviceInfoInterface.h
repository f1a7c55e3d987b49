#pragma once

#include <map>
#include <string>

namespace DeviceAbstractionLayer {

/// The source of information about the device.
///
/// The library reads "currentHandsFreeStatus", "currentAlwaysOnVoiceMode" and "currentAlwaysOnPTTMode". The value "on"
/// means on; any other value and a missing entry mean off.
///
/// Threads: any thread that calls the handler. Locks: the cache mutex is held inside `initializeSettings` and
/// `getCurrentSettingsMap`: do not call the handler from there.
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
    /// Returns: the current entries of the device information, by key.
    virtual std::map<std::string, std::string> getDeviceInfo() = 0;

    virtual ~OrliaDeviceInfoInterface() = default;
};

}  // namespace DeviceAbstractionLayer
