#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace SettingsHost {

/// What the host tells the service manager that started it. Without one nothing happens, and one that does not listen
/// changes nothing. `status` is one line that every user of the machine may read.

void notifyStarting(const std::string& status);
/// The listeners listen.
void notifyReady(const std::string& status);
void notifyStopping(const std::string& status);
void notifyAlive();

/// How long the service manager waits for `notifyAlive` before it takes the host for hung; nothing when it does not
/// wait.
std::optional<std::chrono::milliseconds> watchdogTimeout();

}  // namespace SettingsHost
