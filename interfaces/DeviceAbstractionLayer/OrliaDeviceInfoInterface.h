#pragma once

#include <map>
#include <string>

namespace DeviceAbstractionLayer {

/// The source of information about the device.
///
/// What the library does: reads "currentHandsFreeStatus", "currentAlwaysOnVoiceMode" and "currentAlwaysOnPTTMode";
/// exactly "on" means on, everything else (a missing entry too) means off. It calls on the thread of the request, and
/// with the cache's mutex held inside `initializeSettings` and `getCurrentSettingsMap`.
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
    /// All that is known about the device at this moment, by key.
    virtual std::map<std::string, std::string> getDeviceInfo() = 0;

    virtual ~OrliaDeviceInfoInterface() = default;
};

}  // namespace DeviceAbstractionLayer
