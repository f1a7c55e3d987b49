#pragma once

#include <string>

#include "wire/HostClients.h"

namespace WireTests {

/// Checks trace frames in order.
class TraceCheck {
public:
    /// Returns: why the traced frame is invalid; nothing when it is valid.
    ///
    /// A frame of the host must be valid under its schema. So must a request of a known type, unless the device
    /// listener refuses it in the next trace frame.
    std::optional<std::string> faultOf(const std::string& trace);

private:
    std::optional<std::string> expectedToBeRefused;
};

/// Switches the trace of a host on, and fails the test when a traced frame is invalid.
class TracedHost {
public:
    /// Returns when the trace is on. `devicePath`: the path of the device socket.
    explicit TracedHost(const std::string& devicePath);
    /// Checks all frames that were traced until now, or until the host ended.
    ~TracedHost();

    TracedHost(const TracedHost&) = delete;
    TracedHost& operator=(const TracedHost&) = delete;

private:
    HostClient device;
};

}  // namespace WireTests
