#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "SettingsClient/SocketCandidates.h"

namespace SettingsClient {

/// A connection to one of the host's sockets, which carries frames, one per line. Throws `ConnectionError` when the
/// host cannot be reached, closes the connection, does not reply in time or sends a line over the limit.
class Connection {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// Including the newline. More than a host needs for all settings of the catalogue at their maximum size.
    static constexpr std::size_t maximumLineSize = 1024UL * 1024;

    /// What to do when a host has too many clients waiting to be accepted.
    enum class WhenBusy { WAIT, GIVE_UP };

    /// Connects to the first host of `candidates` that is running: either of its sockets accepts a connection, or does
    /// not do so in time. So all verbs go to the same host. `timeout` bounds each attempt to connect, each `send` and,
    /// through `deadline`, each `receive`.
    /// Errors: also `InvalidSocketPath`.
    Connection(const std::vector<SocketCandidate>& candidates, std::chrono::milliseconds timeout,
               WhenBusy whenBusy = WhenBusy::WAIT);
    ~Connection();

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const std::string& socketPath() const { return path; }
    /// Becomes readable when the host sends something or closes the connection.
    int descriptor() const { return socket; }

    /// Sends frames, each as a line. If the host has closed the connection, `receive` throws, after it has returned the
    /// lines that the host sent before.
    void send(const std::vector<std::string>& frames);
    /// When to give up waiting for a reply to a request sent now.
    Deadline deadline() const { return std::chrono::steady_clock::now() + timeoutPerStep; }
    /// Waits for the next line; returns it without its newline.
    std::string receive(Deadline deadline);
    /// The next of the lines that were read from the socket already.
    std::optional<std::string> takeLine();
    /// Reads what has arrived, up to a limit; waits for nothing.
    void readAvailable();
    /// Throws what `receive` throws at its deadline.
    [[noreturn]] void failForMissingReply() const;

private:
    /// Waits for a short time without sleep. Returns: whether something came.
    bool receiveAwake(Deadline deadline);
    void waitForBytes(Deadline deadline) const;
    /// Returns: whether something came.
    bool receiveBytes(int flags);
    [[noreturn]] void fail(const std::string& what) const;

    std::string path;
    std::chrono::milliseconds timeoutPerStep;
    int socket = -1;
    std::vector<char> buffer = std::vector<char>(65536);
    std::string pending;
    std::size_t searched = 0;
    /// How many of the next waits sleep at once, and how many did after the last one that was too long.
    int waitsAsleep = 0;
    int lastWaitsAsleep = 0;
};

}  // namespace SettingsClient
