#pragma once

#include <string>

#include "VessaLogger/Log.h"

namespace SettingsHandlerKit {

/// Logs "settings-host:" and `text` through the application's logger. Threads: any.
void logHost(VessaLogger::LogLevel level, const std::string& text);

}  // namespace SettingsHandlerKit
