#pragma once

#include <optional>
#include <string>
#include <vector>

namespace SettingsClient {

/// A socket on which a host may listen.
struct SocketCandidate {
    std::string path;
    /// The other socket of the same host; empty when it is unknown.
    std::string companion;
    /// Why no connection is attempted; empty when one is.
    std::string distrust;
};

/// The sockets that the command line names.
struct SocketOptions {
    std::optional<std::string> settings;
    std::optional<std::string> device;
};

/// The settings sockets and the device sockets to try, in this order. Without options these are the sockets of the
/// user's own host, then of the system's host. As with the host's options of the same names, the device socket is in
/// the folder of the given settings socket, unless it is given too. `runtimeFolder` is the value of XDG_RUNTIME_DIR,
/// null when it is unset.
std::vector<SocketCandidate> settingsSockets(const SocketOptions& options, const char* runtimeFolder);
std::vector<SocketCandidate> deviceSockets(const SocketOptions& options, const char* runtimeFolder);

/// Why a folder in a place where every user can create one is not trusted; empty when it is this user's own, or
/// missing.
std::string distrustOf(const std::string& folder);

}  // namespace SettingsClient
