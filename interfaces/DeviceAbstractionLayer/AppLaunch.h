#pragma once

#include <string>

namespace DeviceAbstractionLayer {

/// The device's launcher of applications.
class [[gnu::visibility("default")]] AppLaunch {
public:
    /// Brings the application `appName` to the front. `argument`: what it is started with; the library passes "".
    /// Called on the transport's thread, without a lock. Returns: whether it was launched; not looked at.
    virtual bool launchApp(std::string appName, std::string argument) = 0;

    virtual ~AppLaunch() = default;
};

}  // namespace DeviceAbstractionLayer
