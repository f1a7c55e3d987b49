#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "support/LineReader.h"
#include "support/ListeningSocket.h"

namespace TestSupport {

/// A datagram socket at which a program under test says something, as to a service manager or a journal.
class NotificationSocket {
public:
    explicit NotificationSocket(const std::string& path);

    /// The next datagram; nothing when none came in time.
    std::optional<std::string> receive(std::chrono::milliseconds deadline = waitTimeout);

    /// When the last one arrived, whenever the test came to read it. Counted from the epoch.
    std::chrono::nanoseconds received() const { return arrival; }

private:
    PlainSocket socket;
    std::chrono::nanoseconds arrival{0};
};

}  // namespace TestSupport
