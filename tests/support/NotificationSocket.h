#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "support/LineReader.h"
#include "support/ListeningSocket.h"

namespace TestSupport {

/// A datagram socket that receives from a program under test, as a service manager or the journal does.
class NotificationSocket {
public:
    explicit NotificationSocket(const std::string& path);

    /// The next datagram; nothing when none came in time.
    std::optional<std::string> receive(std::chrono::milliseconds deadline = waitTimeout);

    /// The arrival time of the last one, independent of when the test read it, since the epoch.
    std::chrono::nanoseconds received() const { return arrival; }

private:
    PlainSocket socket;
    std::chrono::nanoseconds arrival{0};
};

}  // namespace TestSupport
