#include "service/ServiceManager.h"

#include <systemd/sd-daemon.h>

namespace SettingsHost {

namespace {

void tell(const std::string& state) {
    ::sd_notify(0, state.c_str());
}

}  // namespace

void tellStarting(const std::string& status) {
    tell("STATUS=" + status);
}

void tellReady(const std::string& status) {
    tell("READY=1\nSTATUS=" + status);
}

void tellStopping(const std::string& status) {
    tell("STOPPING=1\nSTATUS=" + status);
}

void tellAlive() {
    tell("WATCHDOG=1");
}

std::optional<std::chrono::milliseconds> patienceOfServiceManager() {
    std::uint64_t microseconds = 0;
    if (::sd_watchdog_enabled(0, &microseconds) <= 0) {
        return std::nullopt;
    }
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::microseconds(microseconds));
}

}  // namespace SettingsHost
