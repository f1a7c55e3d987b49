#pragma once

#include <string>

#include "service/logging/LineFormat.h"
#include "service/logging/LogFile.h"

namespace SettingsHost {

/// Says why the host ends, when it cannot start or cannot go on. On standard error that is "settings-host: " and
/// `reason`; with LogFormat::JSON it is a log line of level 3, and so it is in the journal where standard error leads
/// there, and in `file` unless that is null.
/// The log need not be set up yet. Like the log it waits for nobody.
void reportFatalError(LogFormat format, LogFile* file, const std::string& reason);

}  // namespace SettingsHost
