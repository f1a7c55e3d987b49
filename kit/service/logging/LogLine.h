#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "VessaLogger/Log.h"

namespace SettingsHandlerKit {

/// One line of the log, as the application's logger emits it. The references are valid during the call only.
struct LogLine {
    VessaLogger::LogLevel level;
    std::chrono::system_clock::time_point time;
    /// Identifies the thread that logged the line.
    const std::string& threadId;
    /// May hold line ends and other control characters.
    const std::string& text;
};

/// Takes one line at a time, on the thread that logs. Must not log itself.
using LogSink = std::function<void(const LogLine&)>;

}  // namespace SettingsHandlerKit
