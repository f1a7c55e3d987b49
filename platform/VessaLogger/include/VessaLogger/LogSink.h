#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "VessaLogger/Log.h"

namespace VessaLogger {

/// One emitted line. The references are valid during the call of the sink only.
struct LogLine {
    /// Its level.
    LogLevel level;
    /// When it was logged.
    std::chrono::system_clock::time_point time;
    /// The thread that logged it.
    const std::string& threadId;
    /// May contain line ends and other control characters, see `escapeControlCharacters`.
    const std::string& text;
    /// The part of the application that logged it.
    LogSource source;
};

/// A function that writes lines. It is called for one line at a time, on the thread that logs, and must not log.
using LogSink = std::function<void(const LogLine&)>;

/// Sends every line from now on to `sink`. An empty sink restores the default, standard error.
/// Threads: any. The old sink is not called any more after this returns.
[[gnu::visibility("default")]] void setLogSink(LogSink sink);

/// Returns: `text` as one printable line. Each control character, line ends included, becomes an escape such as `\n`,
/// `\x1b` or `\u009b`; all other bytes stay.
[[gnu::visibility("default")]] std::string escapeControlCharacters(const std::string& text);

}  // namespace VessaLogger
