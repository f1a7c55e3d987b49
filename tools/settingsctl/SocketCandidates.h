#pragma once

#include <optional>
#include <string>
#include <vector>

namespace SettingsCtl {

/// A socket that a host may listen at.
struct SocketPlace {
    std::string path;
    /// The same host's other socket; empty when nobody knows it.
    std::string companion;
    /// Why it is not even tried; empty when it is.
    std::string objection;
};

/// What the command line says about sockets.
struct SocketOptions {
    std::optional<std::string> settings;
    std::optional<std::string> device;
};

/// The settings sockets and the device's sockets to try, in this order. Without options these are the sockets of the
/// user's own host, then of the system's. As with the host's options of the same names, the device's socket is beside
/// the settings socket that is given, unless it is given too.
/// `runtimeFolder` is what XDG_RUNTIME_DIR says, null when it is unset.
std::vector<SocketPlace> settingsPlaces(const SocketOptions& options, const char* runtimeFolder);
std::vector<SocketPlace> devicePlaces(const SocketOptions& options, const char* runtimeFolder);

/// Why a folder that anybody could have made is not this user's own; empty when it is, or when it is not there.
std::string objectionTo(const std::string& folder);

}  // namespace SettingsCtl
