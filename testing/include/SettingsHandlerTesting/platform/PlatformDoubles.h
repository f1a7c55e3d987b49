#pragma once

#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "SettingsHandlerTesting/Journal.h"
#include "VessaLogger/Log.h"

/// Link-time doubles of the logger, the metrics cache and the application table. Link
/// `SettingsHandler::testing_platform` instead of the platform libraries; the two cannot be linked together.
///
/// Knobs: what they record to, `PlatformRecording` and `RecordingLog`; exceptions and delays through `Journal::at` on
/// the entry of a line. Without either, lines are dropped.
///
/// Threads: any, for what is recorded. A recording begins and ends while no other thread uses the handler.
///
/// Unlike the real ones they print nothing, drop no line for its level, and know one application: `VA_SETTINGS_APP` is
/// "settings-app".
namespace SettingsHandlerTesting {

/// While it lives, the doubles write to `journal`, in line with everything else that happens:
/// `log 1 SettingsHandler:isRequestValid` for a line of level 1, `metricsCache.setOrliaLocale(en-US)`. One at a time.
class PlatformRecording {
public:
    /// `journal` outlives it.
    explicit PlatformRecording(Journal& journal);
    ~PlatformRecording();

    PlatformRecording(const PlatformRecording&) = delete;
    PlatformRecording& operator=(const PlatformRecording&) = delete;
};

/// A line of the log. Level 0 is a trace, 1 information, 2 a warning, 3 an error.
struct LogLine {
    /// From 0 to 3.
    int level = -1;
    /// As it was emitted, with the tag in front.
    std::string text;
};

/// Every member is equal, or not; and the text that failing tests print.
/// @{
inline bool operator==(const LogLine& left, const LogLine& right) {
    return left.level == right.level && left.text == right.text;
}
inline bool operator!=(const LogLine& left, const LogLine& right) {
    return !(left == right);
}
inline std::ostream& operator<<(std::ostream& stream, const LogLine& line) {
    return stream << line.level << " " << line.text;
}
/// @}

/// While it lives, it keeps the lines of the log, apart from any journal; for a test that is about the log:
///
///     RecordingLog log;
///     handler->addFriendlyNameObserver(nullptr);
///     EXPECT_EQ(log.take(VessaLogger::WARNING), (std::vector<LogLine>{{2, "SettingsHandler:…"}}));
///
/// One at a time. Nothing waits: a line is here when the operation that logged it has returned.
class RecordingLog {
public:
    RecordingLog();
    ~RecordingLog();

    RecordingLog(const RecordingLog&) = delete;
    RecordingLog& operator=(const RecordingLog&) = delete;

    /// The lines so far of this level and the more serious ones; no line is left afterwards.
    std::vector<LogLine> take(int leastLevel = 0);

    /// Called by the logger.
    void add(LogLine line);

private:
    std::mutex mutex;
    std::vector<LogLine> lines;
};

/// What the doubles were asked while the library was loaded, in order: "Log::instance", "MetricsCache::instance".
std::vector<std::string> singletonRequests();

/// Called by each double's `instance()` if the program defines it; lets a test look at what is built by then.
void onSingletonRequest(const char* which);

/// The details of the line emitted last.
struct LastLine {
    /// What `emitLog` was given.
    /// @{
    std::string threadId;
    int source = -1;
    long long secondsSinceEpoch = 0;
    /// @}
};
/// The line emitted last in this process.
LastLine lastLine();

}  // namespace SettingsHandlerTesting
