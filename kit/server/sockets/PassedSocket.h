#pragma once

#include <string>

namespace SettingsHandlerKit {

/// Checks a listening socket that another process opened, and makes it non-blocking and close-on-exec.

/// Returns: the path at which the Unix stream socket listens. Errors: `ListenerError`, also for an abstract socket,
/// since those have no access control.
std::string checkPassedUnixSocket(int descriptor);

/// Errors: `ListenerError` unless it is a TCP socket that listens at a loopback address.
void checkPassedLoopbackSocket(int descriptor);

}  // namespace SettingsHandlerKit
