#pragma once

#include <string>

#include "service/logging/LineFormat.h"
#include "service/logging/LogFile.h"

namespace SettingsHandlerKit {

/// Reports why the host ends: on standard error as "settings-host: " and `reason`; with LogFormat::JSON, in the journal
/// (if standard error is connected to it) and in `file` (unless null) as a log line of level 3.
/// Does not need the log to be set up, and never blocks.
void reportFatalError(LogFormat format, LogFile* file, const std::string& reason);

}  // namespace SettingsHandlerKit
