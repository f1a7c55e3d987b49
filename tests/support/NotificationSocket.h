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
    std::optional<std::string> receive(std::chrono::milliseconds deadline = patience);

private:
    PlainSocket socket;
};

}  // namespace TestSupport
