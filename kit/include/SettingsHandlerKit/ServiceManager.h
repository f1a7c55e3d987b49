#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace SettingsHandlerKit {

// Notifications to the service manager that started the program. Without one, or when it cannot be reached, they do
// nothing. `status` is one line, which every user of the machine can read.

void notifyStarting(const std::string& status);
/// All listeners are open.
void notifyReady(const std::string& status);
/// Not ready for a moment, until `notifyReady`.
void notifyReloading(const std::string& status);
void notifyStopping(const std::string& status);
void notifyAlive();

/// How long the service manager waits for `notifyAlive` before it considers the program hung; nothing without a
/// watchdog.
std::optional<std::chrono::milliseconds> watchdogTimeout();

}  // namespace SettingsHandlerKit
