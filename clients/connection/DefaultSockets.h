#pragma once

#include <string>

namespace SettingsClient {

/// The value of XDG_RUNTIME_DIR; null when it is unset.
const char* runtimeFolder();

/// The settings sockets that are tried when nobody names any, for the help of a program.
std::string defaultSockets();

}  // namespace SettingsClient
