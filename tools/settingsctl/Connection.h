#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <poll.h>

#include "SocketCandidates.h"

namespace SettingsCtl {

/// A connection to one of the host's sockets that speaks lines. A host that cannot be reached, ends, does not answer in
/// time or sends a line over the limit is a `Failure` (UNREACHABLE).
class Connection {
public:
    using Deadline = std::optional<std::chrono::steady_clock::time_point>;

    /// With its end. More than a host needs for all settings of the catalogue, each as large as a request can make it.
    static constexpr std::size_t maximumLineSize = 1024UL * 1024;

    /// Connects to the first host of `places` that is there. One is when either of its sockets accepts a connection, so
    /// that no verb goes to another host than the verb before it. Somebody who listens but does not accept in time is
    /// there, too. `waitingTime` bounds each connecting and each `send`, and is what `deadline` gives to receiving.
    Connection(const std::vector<SocketPlace>& places, std::chrono::milliseconds waitingTime);
    ~Connection();

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const std::string& socketPath() const { return path; }

    /// Sends lines that are already ended. A host that has closed the connection is told by the next `receive`, after
    /// what it said before.
    void send(const std::string& lines);
    /// The moment until which an answer to what is sent now is waited for.
    Deadline deadline() const { return std::chrono::steady_clock::now() + timeout; }
    /// The next line without its end. Without a deadline it may take for ever.
    std::string receive(Deadline deadline);
    /// The next line, or nothing when one of the other descriptors has something to say before.
    std::optional<std::string> receive(Deadline deadline, const std::vector<pollfd>& others);

private:
    bool waitForBytes(Deadline deadline, const std::vector<pollfd>& others);
    void receiveBytes();
    [[noreturn]] void fail(const std::string& what) const;

    std::string path;
    std::chrono::milliseconds timeout;
    int socket = -1;
    std::string pending;
    std::size_t searched = 0;
};

}  // namespace SettingsCtl
