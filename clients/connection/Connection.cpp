#include "connection/Connection.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "SettingsClient/Errors.h"

namespace SettingsClient {

namespace {

/// A reply mostly comes within tens of microseconds, and sleep with a wake-up takes nearly as long. So a wait begins
/// without sleep, for this time at most.
constexpr std::chrono::microseconds longestAwake{100};

/// After each such wait that was too long (a slow disk, busy processors) twice as many as after the last one sleep at
/// once, and one more; so many at most.
constexpr int mostWaitsAsleep = 63;

/// Throws `InvalidSocketPath`.
sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof(address.sun_path)) {
        throw InvalidSocketPath("the socket path is empty or too long: '" + path + "'");
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

/// Bounds connect(), also to a host whose queue of new connections is full, and send().
void limitWaits(int socket, std::chrono::milliseconds timeout) {
    // For the kernel 0 is no limit.
    timeout = std::max(timeout, std::chrono::milliseconds(1));
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(timeout);
    const timeval limit{seconds.count(),
                        std::chrono::duration_cast<std::chrono::microseconds>(timeout - seconds).count()};
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
}

/// Returns: the socket; -1 and `errno` when it cannot be created or the connection is not accepted.
int connectTo(const std::string& path, std::chrono::milliseconds timeout) {
    const sockaddr_un address = addressOf(path);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0) {
        return -1;
    }
    limitWaits(socket, timeout);
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
        return socket;
    }
    const int error = errno;
    ::close(socket);
    errno = error;
    return -1;
}

bool accepts(const std::string& path, std::chrono::milliseconds timeout) {
    const int socket = path.empty() ? -1 : connectTo(path, timeout);
    if (socket >= 0) {
        ::close(socket);
    }
    return socket >= 0;
}

}  // namespace

Connection::Connection(const std::vector<SocketCandidate>& candidates, std::chrono::milliseconds timeout,
                       WhenBusy whenBusy)
    : timeoutPerStep(timeout) {
    const auto patience = whenBusy == WhenBusy::WAIT ? timeout : std::chrono::milliseconds(0);
    // Growing would leave the smaller buffers in memory; reserved pages cost nothing until they are used.
    pending.reserve(maximumLineSize);
    std::string reasons;
    for (const auto& candidate : candidates) {
        path = candidate.path;
        socket = candidate.distrust.empty() ? connectTo(path, patience) : -1;
        const int error = errno;
        if (socket >= 0) {
            limitWaits(socket, timeout);
            return;
        }
        reasons += (reasons.empty() ? "cannot reach the host at " : ", nor at ") + path + ": " +
                   (candidate.distrust.empty() ? std::strerror(error) : candidate.distrust);
        if (candidate.distrust.empty() && (error == EAGAIN || accepts(candidate.companion, patience))) {
            break;
        }
    }
    throw ConnectionError(reasons + " (is settings-host running?)");
}

Connection::~Connection() {
    ::close(socket);
}

void Connection::fail(const std::string& what) const {
    throw ConnectionError("the host at " + path + " " + what);
}

void Connection::send(const std::vector<std::string>& frames) {
    std::string lines;
    for (const auto& frame : frames) {
        lines += frame + "\n";
    }
    std::size_t sent = 0;
    while (sent < lines.size()) {
        const ssize_t count = ::send(socket, lines.data() + sent, lines.size() - sent, MSG_NOSIGNAL);
        if (count > 0) {
            sent += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            fail("does not read requests");
        } else if (errno == EPIPE || errno == ECONNRESET) {
            return;
        } else if (errno != EINTR) {
            fail(std::string("cannot be sent requests: ") + std::strerror(errno));
        }
    }
}

void Connection::failForMissingReply() const {
    fail("does not reply");
}

bool Connection::receiveAwake(Deadline deadline) {
    if (waitsAsleep > 0) {
        --waitsAsleep;
        return false;
    }
    const auto until = std::min(deadline, std::chrono::steady_clock::now() + longestAwake);
    bool came = receiveBytes(MSG_DONTWAIT);
    while (!came && std::chrono::steady_clock::now() < until) {
        // The host may need this processor.
        ::sched_yield();
        came = receiveBytes(MSG_DONTWAIT);
    }
    // Others may also have had the processor for too long.
    const bool wasLong = std::chrono::steady_clock::now() >= until;
    lastWaitsAsleep = wasLong ? std::min(2 * lastWaitsAsleep + 1, mostWaitsAsleep) : 0;
    waitsAsleep = lastWaitsAsleep;
    return came;
}

void Connection::waitForBytes(Deadline deadline) const {
    pollfd wanted{socket, POLLIN, 0};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        const int ready =
            ::poll(&wanted, 1, static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0)));
        if (ready == 0) {
            failForMissingReply();
        }
        if (ready > 0) {
            return;
        }
    }
}

bool Connection::receiveBytes(int flags) {
    const std::size_t before = pending.size();
    if (before == maximumLineSize) {
        fail("sent a line longer than 1 MiB");
    }
    const ssize_t count = ::recv(socket, buffer.data(), std::min(buffer.size(), maximumLineSize - before), flags);
    pending.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK)) {
        fail("closed the connection");
    }
    return count > 0;
}

void Connection::readAvailable() {
    receiveBytes(MSG_DONTWAIT);
}

std::optional<std::string> Connection::takeLine() {
    const std::size_t end = pending.find('\n', searched);
    if (end == std::string::npos) {
        searched = pending.size();
        return std::nullopt;
    }
    std::string line = pending.substr(0, end);
    pending.erase(0, end + 1);
    searched = 0;
    return line;
}

std::string Connection::receive(Deadline deadline) {
    for (;;) {
        if (auto line = takeLine()) {
            return std::move(*line);
        }
        if (!receiveAwake(deadline)) {
            waitForBytes(deadline);
            receiveBytes(0);
        }
    }
}

}  // namespace SettingsClient
