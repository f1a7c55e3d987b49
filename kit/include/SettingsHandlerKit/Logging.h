#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "VessaLogger/Log.h"

namespace SettingsHandlerKit {

/// The name under which the program was started, without folders: what its log lines begin with. Threads: any.
std::string programName();

/// Logs the program's name, ":" and `text` through the application's logger, as everything in the kit does: the prefix
/// tells its lines from those of the library. Threads: any.
void writeLog(VessaLogger::LogLevel level, const std::string& text);

/// One line of the log, as the application's logger emits it. The references are valid during the call only.
struct LogLine {
    /// How important it is.
    VessaLogger::LogLevel level;
    /// When it was logged.
    std::chrono::system_clock::time_point time;
    /// Identifies the thread that logged the line.
    const std::string& threadId;
    /// May hold line ends and other control characters.
    const std::string& text;
};

/// Takes one line at a time, on the thread that logs. Must not log itself.
using LogSink = std::function<void(const LogLine&)>;

/// A request that is being handled.
struct CurrentRequest {
    /// The message type.
    int type = 0;
    /// The key that it names; empty when it names none.
    std::string setting;
};

/// The request that is being handled, for the log lines written meanwhile. Threads: one.
class RequestContext {
public:
    /// Sets the request for the lifetime of the object.
    class Scope {
    public:
        /// `request` is current from now on.
        Scope(RequestContext& requestContext, CurrentRequest request)
            : context(requestContext), before(std::exchange(context.request, std::move(request))) {}
        ~Scope() { context.request = std::move(before); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        RequestContext& context;
        std::optional<CurrentRequest> before;
    };

    /// Nothing while none is handled.
    const std::optional<CurrentRequest>& current() const { return request; }

private:
    std::optional<CurrentRequest> request;
};

/// How log lines look. TEXT: time, level, thread, and the text with control characters escaped. JSON: one object per
/// line with "time", "level", "thread" and "text", valid JSON for any bytes; while a request is handled "requestType",
/// and "setting" if the request names one.
enum class LogFormat { TEXT, JSON };

/// A destination of log lines. Never blocks, and never throws because a line cannot be written.
class LogOutput {
public:
    LogOutput() = default;
    virtual ~LogOutput() = default;
    LogOutput(const LogOutput&) = delete;
    LogOutput& operator=(const LogOutput&) = delete;

    /// Writes one line; `line` includes the line end. Returns: false when it was lost.
    virtual bool write(const std::string& line) = 0;
};

/// A log file with mode 0600 from its creation, whatever the umask. Before it exceeds the limit it is rotated: FILE
/// becomes FILE.1, FILE.1 becomes FILE.2. Links, files of other users and anything but regular files are refused. A
/// line is written completely or not at all: one that does not fit on the disk is lost.
class LogFile : public LogOutput {
public:
    /// The usual limit, in bytes.
    static constexpr std::size_t maximumSize = 1024UL * 1024UL;
    /// The names of all files of the log `file`, the newest first: FILE, FILE.1, FILE.2. They need not exist.
    static std::vector<std::string> filesOf(const std::string& file);

    /// Opens nothing yet. `limit`: in bytes.
    explicit LogFile(std::string path, std::size_t limit = maximumSize);
    ~LogFile() override;

    bool write(const std::string& line) override;

    /// The path.
    const std::string& name() const { return path; }
    /// Why the last line was lost, for a message.
    const std::string& failure() const { return reason; }
    /// Opens the file unless it is open. Returns: false when it cannot be written, see `failure`.
    bool open();
    /// Closes the file and opens the path again, for programs that rename log files. Returns: as `open`.
    bool reopen();

private:
    bool fail(const std::string& why);
    bool accept(int opened);
    bool rotate();
    bool append(const std::string& line);
    void close();

    std::string path;
    std::size_t limit;
    int descriptor = -1;
    std::size_t size = 0;
    std::string reason;
};

/// Reopens `file` and logs the result: what SIGHUP does when programs rename log files.
void reopenLogFile(LogFile& file);

/// The options of the log.
struct LogOptions {
    /// Lines of lower levels are dropped.
    int minimumLevel = 1;
    /// The format on standard error and in the file.
    LogFormat format = LogFormat::TEXT;
    /// A log file besides standard error, see `LogFile`; empty for none.
    std::string file;
};

/// A sink that writes each line of at least the minimum level immediately: to standard error, without ever waiting for
/// its reader, or to systemd's journal if standard error is connected to it; and to `file`, unless null.
/// Errors: a line that cannot be written is dropped. The number of dropped lines is logged at level 2 before the next
/// line that can be written to the same destination.
LogSink makeLogSink(const LogOptions& options, const std::shared_ptr<const RequestContext>& context,
                    const std::shared_ptr<LogFile>& file);

/// Reports why the program ends: on standard error as the program's name, ": " and `reason`; with LogFormat::JSON, in
/// the journal (if standard error is connected to it) and in `file` (unless null) as a log line of level 3. Does not
/// need the log to be set up, and never blocks.
void reportFatalError(LogFormat format, LogFile* file, const std::string& reason);

}  // namespace SettingsHandlerKit
