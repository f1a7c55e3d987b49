#include "connection/Connection.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "SettingsClient/Errors.h"

namespace SettingsClient {

namespace {

constexpr std::size_t readSize = 65536;

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

/// Returns: the socket; -1 and `errno` when the connection is not accepted.
int connectTo(const std::string& path, std::chrono::milliseconds timeout) {
    const sockaddr_un address = addressOf(path);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    // Also bounds connect() to a host whose queue of new connections is full.
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(timeout);
    const timeval limit{seconds.count(),
                        std::chrono::duration_cast<std::chrono::microseconds>(timeout - seconds).count()};
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
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

Connection::Connection(const std::vector<SocketCandidate>& candidates, std::chrono::milliseconds timeout)
    : timeoutPerStep(timeout) {
    // Growing would leave the smaller buffers in memory; reserved pages cost nothing until they are used.
    pending.reserve(maximumLineSize);
    std::string reasons;
    for (const auto& candidate : candidates) {
        path = candidate.path;
        socket = candidate.distrust.empty() ? connectTo(path, timeout) : -1;
        const int error = errno;
        if (socket >= 0) {
            return;
        }
        reasons += (reasons.empty() ? "cannot reach the host at " : ", nor at ") + path + ": " +
                   (candidate.distrust.empty() ? std::strerror(error) : candidate.distrust);
        if (candidate.distrust.empty() && (error == EAGAIN || accepts(candidate.companion, timeout))) {
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

bool Connection::waitForBytes(Deadline deadline, const std::vector<pollfd>& others) {
    std::vector<pollfd> wanted = others;
    wanted.push_back({socket, POLLIN, 0});
    for (;;) {
        int milliseconds = -1;
        if (deadline) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
            milliseconds = static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
        }
        const int ready = ::poll(wanted.data(), wanted.size(), milliseconds);
        if (ready == 0) {
            fail("does not reply");
        }
        if (ready > 0) {
            return std::all_of(wanted.begin(), wanted.end() - 1,
                               [](const pollfd& other) { return other.revents == 0; });
        }
    }
}

void Connection::receiveBytes() {
    const std::size_t before = pending.size();
    if (before == maximumLineSize) {
        fail("sent a line longer than 1 MiB");
    }
    pending.resize(std::min(before + readSize, maximumLineSize));
    const ssize_t count = ::recv(socket, pending.data() + before, pending.size() - before, 0);
    pending.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0 || (count < 0 && errno != EINTR)) {
        fail("closed the connection");
    }
}

std::optional<std::string> Connection::receive(Deadline deadline, const std::vector<pollfd>& others) {
    for (;;) {
        const std::size_t end = pending.find('\n', searched);
        if (end != std::string::npos) {
            std::string line = pending.substr(0, end);
            pending.erase(0, end + 1);
            searched = 0;
            return line;
        }
        searched = pending.size();
        if (!waitForBytes(deadline, others)) {
            return std::nullopt;
        }
        receiveBytes();
    }
}

std::string Connection::receive(Deadline deadline) {
    return receive(deadline, {}).value();
}

}  // namespace SettingsClient
