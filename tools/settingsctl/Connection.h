#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace SettingsCtl {

/// A connection to one of the host's sockets that speaks lines. Every wait ends after the time-out with a `Failure`
/// (UNREACHABLE), as does the end of the host.
class Connection {
public:
    Connection(std::string path, std::chrono::milliseconds timeout);
    ~Connection();

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Sends lines that are already ended.
    void send(const std::string& lines);
    /// The next line without its end.
    std::string receive();
    /// The next line however long it takes; nothing when `wake`, a descriptor, becomes readable before.
    std::optional<std::string> receiveUntil(int wake);

private:
    using Deadline = std::optional<std::chrono::steady_clock::time_point>;

    std::optional<std::string> nextLine(Deadline deadline, int wake);
    bool waitFor(short events, Deadline deadline, int wake);
    [[noreturn]] void fail(const std::string& what) const;

    std::string path;
    std::chrono::milliseconds timeout;
    int socket = -1;
    std::string pending;
    std::size_t searched = 0;
};

}  // namespace SettingsCtl
