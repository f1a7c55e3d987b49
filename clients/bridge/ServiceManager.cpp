#include "bridge/ServiceManager.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace SettingsBridge {

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

void notify(const std::string& state) {
    const std::string path = variable("NOTIFY_SOCKET");
    sockaddr_un address{};
    if (path.empty() || path.size() >= sizeof(address.sun_path)) {
        return;
    }
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), address.sun_path);
    if (address.sun_path[0] == '@') {
        // An abstract socket: the name starts with NUL and is not terminated.
        address.sun_path[0] = '\0';
    }
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ::sendto(socket, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address), size);
    ::close(socket);
}

}  // namespace

void notifyReady(const std::string& status) {
    notify("READY=1\nSTATUS=" + status);
}

void notifyStatus(const std::string& status) {
    notify("STATUS=" + status);
}

void notifyStopping() {
    notify("STOPPING=1");
}

void notifyAlive() {
    notify("WATCHDOG=1");
}

std::optional<std::chrono::microseconds> watchdogTimeout() {
    const std::string text = variable("WATCHDOG_USEC");
    const std::string process = variable("WATCHDOG_PID");
    std::int64_t microseconds = 0;
    std::from_chars(text.data(), text.data() + text.size(), microseconds);
    // Child processes inherit variables that are not meant for them.
    if (microseconds <= 0 || (!process.empty() && process != std::to_string(::getpid()))) {
        return std::nullopt;
    }
    return std::chrono::microseconds(microseconds);
}

}  // namespace SettingsBridge
