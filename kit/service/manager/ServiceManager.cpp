#include "SettingsHandlerKit/ServiceManager.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include <sys/socket.h>
#include <sys/un.h>

#include "SettingsHandlerKit/Descriptor.h"
#include "service/manager/ManagerVariables.h"

namespace SettingsHandlerKit {

namespace {

/// Does nothing when the address cannot be reached.
void notify(const std::string& state) {
    const auto path = managerVariable("NOTIFY_SOCKET");
    sockaddr_un address{};
    if (!path || path->empty() || path->size() >= sizeof(address.sun_path)) {
        return;
    }
    address.sun_family = AF_UNIX;
    std::copy(path->begin(), path->end(), address.sun_path);
    if (address.sun_path[0] == '@') {
        // An abstract socket: the name starts with NUL and is not terminated.
        address.sun_path[0] = '\0';
    }
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path->size());
    const Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ::sendto(socket.get(), state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address), size);
}

}  // namespace

void notifyStarting(const std::string& status) {
    notify("STATUS=" + status);
}

void notifyReady(const std::string& status) {
    notify("READY=1\nSTATUS=" + status);
}

void notifyReloading(const std::string& status) {
    using namespace std::chrono;
    const auto now = duration_cast<microseconds>(steady_clock::now().time_since_epoch());
    notify("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(now.count()) + "\nSTATUS=" + status);
}

void notifyStopping(const std::string& status) {
    notify("STOPPING=1\nSTATUS=" + status);
}

void notifyAlive() {
    notify("WATCHDOG=1");
}

std::optional<std::chrono::milliseconds> watchdogTimeout() {
    try {
        const auto microseconds = managerNumber("WATCHDOG_USEC");
        constexpr auto longest = static_cast<std::uint64_t>(std::chrono::microseconds::max().count());
        if (microseconds.value_or(0) == 0 || *microseconds > longest ||
            (managerVariable("WATCHDOG_PID") && !isMeantForThisProcess("WATCHDOG_PID"))) {
            return std::nullopt;
        }
        return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::microseconds(*microseconds));
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

}  // namespace SettingsHandlerKit
