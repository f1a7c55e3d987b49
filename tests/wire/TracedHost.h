#pragma once

#include <string>

#include "wire/HostClients.h"

namespace WireTests {

/// Looks at copies of messages, in their order.
class TraceCheck {
public:
    /// What is wrong with a copy, the text of a trace frame; nothing when all is well.
    ///
    /// A frame of the host must be valid under its schema. So must a request of a known kind, unless the device's
    /// listener refuses it, as the next copy shows.
    std::optional<std::string> faultOf(const std::string& trace);

private:
    std::optional<std::string> expectedToBeRefused;
};

/// Has a host copy every message of all its clients, and fails the test when one breaks the protocol.
class TracedHost {
public:
    /// Returns when the host copies; `devicePath` is its device's socket.
    explicit TracedHost(const std::string& devicePath);
    /// Looks at what was copied until now, or until the host ended.
    ~TracedHost();

    TracedHost(const TracedHost&) = delete;
    TracedHost& operator=(const TracedHost&) = delete;

private:
    HostClient device;
};

}  // namespace WireTests
