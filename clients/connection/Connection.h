#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <poll.h>

#include "SettingsClient/SocketCandidates.h"

namespace SettingsClient {

/// A connection to one of the host's sockets, which carries frames, one per line. Throws `ConnectionError` when the
/// host cannot be reached, closes the connection, does not reply in time or sends a line over the limit.
class Connection {
public:
    using Deadline = std::optional<std::chrono::steady_clock::time_point>;

    /// Including the newline. More than a host needs for all settings of the catalogue at their maximum size.
    static constexpr std::size_t maximumLineSize = 1024UL * 1024;

    /// Connects to the first host of `candidates` that is running: either of its sockets accepts a connection, or does
    /// not do so in time. So all verbs go to the same host. `timeout` bounds each attempt to connect, each `send` and,
    /// through `deadline`, each `receive`.
    /// Errors: also `InvalidSocketPath`.
    Connection(const std::vector<SocketCandidate>& candidates, std::chrono::milliseconds timeout);
    ~Connection();

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const std::string& socketPath() const { return path; }

    /// Sends frames, each as a line. If the host has closed the connection, `receive` throws, after it has returned the
    /// lines that the host sent before.
    void send(const std::vector<std::string>& frames);
    /// When to give up waiting for a reply to a request sent now.
    Deadline deadline() const { return std::chrono::steady_clock::now() + timeoutPerStep; }
    /// The next line without its newline. Waits without limit if there is no deadline.
    std::string receive(Deadline deadline);
    /// The next line, or nothing when one of the other descriptors is ready first.
    std::optional<std::string> receive(Deadline deadline, const std::vector<pollfd>& others);

private:
    bool waitForBytes(Deadline deadline, const std::vector<pollfd>& others);
    void receiveBytes();
    [[noreturn]] void fail(const std::string& what) const;

    std::string path;
    std::chrono::milliseconds timeoutPerStep;
    int socket = -1;
    std::string pending;
    std::size_t searched = 0;
};

}  // namespace SettingsClient
