#pragma once

#include <string>

namespace SettingsHost {

/// Checks a listening socket that somebody else made, and makes it non-blocking and closed on exec.

/// Returns: the path at which the Unix stream socket listens. Errors: `ListenerError`, also when it has no path, since
/// every user of the machine can connect to such a socket.
std::string checkPassedUnixSocket(int descriptor);

/// Errors: `ListenerError` unless it is a TCP socket that listens at a loopback address.
void checkPassedLoopbackSocket(int descriptor);

}  // namespace SettingsHost
