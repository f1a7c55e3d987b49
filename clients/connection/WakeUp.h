#pragma once

#include <chrono>
#include <optional>

namespace SettingsClient {

/// One descriptor for a socket, which may be replaced, and a timer.
class WakeUp {
public:
    /// Errors: `std::system_error`.
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    /// Is readable when the socket is, and from the set time on.
    int descriptor() const { return waiter; }
    /// Watches `socket` until it is closed.
    void watch(int socket) const;
    /// Replaces the time that was set before; nothing: never.
    void setTime(std::optional<std::chrono::steady_clock::time_point> time) const;

private:
    int waiter;
    int timer;
};

}  // namespace SettingsClient
