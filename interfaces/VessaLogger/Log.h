#pragma once

#include <chrono>
#include <string>

namespace VessaLogger {

/// The level of a line; higher is more severe.
enum LogLevel : int {
    /// Detailed traces.
    TRACE = 0,
    /// Routine information.
    INFORMATION = 1,
    /// Something unexpected that was ignored.
    WARNING = 2,
    /// Something was refused or failed.
    ERROR = 3,
};

/// The part of the application that a line comes from.
enum LogSource : int {
    NATIVE_SERVICE = 2,
};

/// The application's logger. A component library of the application; this is the part that the handler uses.
///
/// The library emits all its lines, whatever their level, on the thread that calls the handler, sometimes with the
/// cache mutex held.
///
/// The implementer serialises the output and does not call the handler. An exception of `emitLog` leaves the operation
/// that was logging.
class [[gnu::visibility("default")]] Log {
public:
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    /// Returns: the only instance in the process. The library requests it once, while it is loaded.
    static Log& instance();

    /// Returns: a text that identifies the calling thread.
    std::string getThreadId();

    /// Writes one line. `text`: any bytes except NUL, line ends included.
    void emitLog(LogLevel level, std::chrono::system_clock::time_point time, const std::string& threadId,
                 const std::string& text, LogSource source);

private:
    Log() = default;
    ~Log() = default;
};

}  // namespace VessaLogger
