#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace SettingsBridge {

// What a service is told by systemd, and tells it. Without systemd nothing happens.

/// The service can be used.
void notifyReady(const std::string& status);
/// What the service does now, for people.
void notifyStatus(const std::string& status);
void notifyStopping();
void notifyAlive();

/// How long the service may be silent; nothing: for ever.
std::optional<std::chrono::microseconds> watchdogTimeout();

}  // namespace SettingsBridge
