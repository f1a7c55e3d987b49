#pragma once

#include <string>

#include "wire/HostClients.h"

namespace WireTests {

/// Has a host copy every message of all its clients, and fails the test when one breaks the protocol: a frame of the
/// host, or a request of a kind that the protocol knows.
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

/// What is wrong with a copy of a message, the text of a trace frame. Nothing when all is well.
std::optional<std::string> faultOfTrace(const std::string& trace);

}  // namespace WireTests
