#pragma once

#include <chrono>
#include <string>

namespace VessaLogger {

/// How serious a line is; higher is more severe.
enum LogLevel : int {
    /// Detailed traces.
    TRACE = 0,
    /// Routine information.
    INFORMATION = 1,
    /// Something odd that was put up with.
    WARNING = 2,
    /// Something was refused or failed.
    ERROR = 3,
};

/// Which part of the application a line comes from.
enum LogSource : int {
    NATIVE_SERVICE = 2,
};

/// The application's shared logger. A component library of the application; this is the part of it that the handler
/// uses.
///
/// What the library does: emits its lines on any thread, sometimes with a mutex of its own held, and filters nothing.
///
/// What the implementer does: serialises output, and never calls back into the handler. An exception that leaves
/// `emitLog` leaves the operation that was logging.
class [[gnu::visibility("default")]] Log {
public:
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    /// The one instance of the process. The library asks for it once, while it is loaded.
    static Log& instance();

    /// A text that identifies the calling thread.
    std::string getThreadId();

    /// Writes one line. `text`: may hold any bytes but NUL, line ends included.
    void emitLog(LogLevel level, std::chrono::system_clock::time_point time, const std::string& threadId,
                 const std::string& text, LogSource source);

private:
    Log() = default;
    ~Log() = default;
};

}  // namespace VessaLogger
