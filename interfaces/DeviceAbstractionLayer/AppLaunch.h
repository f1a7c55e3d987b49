#pragma once

#include <string>

namespace DeviceAbstractionLayer {

/// The device's launcher of applications.
class [[gnu::visibility("default")]] AppLaunch {
public:
    /// Launches the application `appName`, or brings it to the front.
    /// - `argument`: the argument to start it with; the library passes "".
    /// - Returns: whether it was launched; the library ignores it.
    /// - Threads: the transport's. Locks: none held.
    virtual bool launchApp(std::string appName, std::string argument) = 0;

    virtual ~AppLaunch() = default;
};

}  // namespace DeviceAbstractionLayer
