#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace SettingsHost {

/// What the host tells the service manager that started it. Without one nothing happens, and one that does not listen
/// changes nothing. `status` is one line that every user of the machine may read.

void tellStarting(const std::string& status);
/// The doors listen.
void tellReady(const std::string& status);
void tellStopping(const std::string& status);
void tellAlive();

/// How long the service manager waits for `tellAlive` before it takes the host for hung; nothing when it does not wait.
std::optional<std::chrono::milliseconds> patienceOfServiceManager();

}  // namespace SettingsHost
