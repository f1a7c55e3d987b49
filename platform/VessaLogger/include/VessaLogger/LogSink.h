#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "VessaLogger/Log.h"

namespace VessaLogger {

/// One emitted line. The references are valid during the call of the sink only.
struct LogLine {
    /// How serious it is.
    LogLevel level;
    /// When it was logged.
    std::chrono::system_clock::time_point time;
    /// What identifies the thread that logged it.
    const std::string& threadId;
    /// May hold line ends and other control characters, see `escapeControlCharacters`.
    const std::string& text;
    /// Which part of the application logged it.
    LogSource source;
};

/// Where lines go. Called for one line at a time, on the thread that logs; must not log itself.
using LogSink = std::function<void(const LogLine&)>;

/// Sends every line from now on to `sink`; an empty one restores standard error, where lines go from the start.
/// Threads: any. The replaced sink is not called any more once this returns.
[[gnu::visibility("default")]] void setLogSink(LogSink sink);

/// Makes one printable line of any text: each control character, a line end too, becomes an escape such as `\n`,
/// `\x1b` or `\u009b`. Other bytes of UTF-8 texts stay as they are.
[[gnu::visibility("default")]] std::string escapeControlCharacters(const std::string& text);

}  // namespace VessaLogger
