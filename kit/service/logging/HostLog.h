#pragma once

#include <string>

#include "VessaLogger/Log.h"

namespace SettingsHost {

/// Emits a line of the host's own, "settings-host:" and `text`, through the application's shared logger. Threads: any.
void logHost(VessaLogger::LogLevel level, const std::string& text);

}  // namespace SettingsHost
