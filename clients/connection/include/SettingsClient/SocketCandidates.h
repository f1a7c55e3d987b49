#pragma once

#include <optional>
#include <string>
#include <vector>

namespace SettingsClient {

/// A socket on which a host may listen.
struct SocketCandidate {
    /// Where it is.
    std::string path;
    /// The other socket of the same host; empty when it is unknown.
    std::string companion = {};
    /// Why no connection is attempted; empty when one is.
    std::string distrust = {};
};

/// The sockets that somebody names; nothing: the default ones.
struct SocketOptions {
    /// The settings socket.
    std::optional<std::string> settings = std::nullopt;
    /// The socket of the simulated device.
    std::optional<std::string> device = std::nullopt;
};

/// The settings sockets to try, in this order: the one that `options` names, or those of the user's own host and of the
/// system's. `runtimeFolder` is the value of XDG_RUNTIME_DIR, null when it is unset.
std::vector<SocketCandidate> settingsSockets(const SocketOptions& options, const char* runtimeFolder);
/// The device sockets to try. As with the host's options of the same names, the device socket is in the folder of the
/// settings socket that `options` names, unless it is named, too.
std::vector<SocketCandidate> deviceSockets(const SocketOptions& options, const char* runtimeFolder);
/// The settings sockets to try when nobody names any, as the environment says.
std::vector<SocketCandidate> defaultSettingsSockets();

/// Why a folder in a place where every user can create one is not trusted; empty when it is this user's own, or
/// missing.
std::string distrustOf(const std::string& folder);

}  // namespace SettingsClient
