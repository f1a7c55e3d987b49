#pragma once

#include <chrono>
#include <optional>

namespace SettingsClient {

/// One descriptor for a socket, which may be replaced, and a timer.
class WakeUp {
public:
    using Time = std::chrono::steady_clock::time_point;

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
    void setTime(const std::optional<Time>& time);

private:
    void closeAll() const;
    void setTimer(const std::optional<Time>& time) const;

    int waiter;
    int timer;
    /// Readable while the time has come.
    int alarm;
    bool hasAlarm = false;
    std::optional<Time> timerTime;
};

}  // namespace SettingsClient
