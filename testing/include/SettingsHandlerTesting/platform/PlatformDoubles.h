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
/// Options: `PlatformRecording` and `RecordingLog`, which record what they get; exceptions and delays through
/// `Journal::at` with the entry of a line. Without either, lines are dropped.
///
/// Threads: any for the operations. Begin and end a recording while no other thread uses the handler.
///
/// Differences from the real ones: they print nothing, drop no line because of its level, and know one application:
/// `VA_SETTINGS_APP` is "settings-app".
namespace SettingsHandlerTesting {

/// While it exists, the doubles record into `journal`: `log 1 SettingsHandler:isRequestValid` for a line of level 1,
/// `metricsCache.setOrliaLocale(en-US)`. Only one may exist at a time.
class PlatformRecording {
public:
    /// `journal` must outlive it.
    explicit PlatformRecording(Journal& journal);
    ~PlatformRecording();

    PlatformRecording(const PlatformRecording&) = delete;
    PlatformRecording& operator=(const PlatformRecording&) = delete;
};

/// A line of the log.
struct LogLine {
    /// A `VessaLogger::LogLevel`.
    int level = -1;
    /// The emitted text, with the tag.
    std::string text;
};

/// Compares all members; and prints for failing tests.
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

/// While it exists, it keeps the lines of the log, without a journal:
///
///     RecordingLog log;
///     handler->addFriendlyNameObserver(nullptr);
///     EXPECT_EQ(log.take(VessaLogger::WARNING), (std::vector<LogLine>{{2, "SettingsHandler:…"}}));
///
/// Only one may exist at a time. A line is available when the operation that logged it returns.
class RecordingLog {
public:
    RecordingLog();
    ~RecordingLog();

    RecordingLog(const RecordingLog&) = delete;
    RecordingLog& operator=(const RecordingLog&) = delete;

    /// Removes all lines so far, and returns those of this level and the more severe ones.
    std::vector<LogLine> take(int leastLevel = 0);

    /// Called by the logger.
    void add(LogLine line);

private:
    std::mutex mutex;
    std::vector<LogLine> lines;
};

/// Returns: the calls of `instance()` so far, in order: "Log::instance", "MetricsCache::instance".
std::vector<std::string> singletonRequests();

/// Called by each double's `instance()` if the program defines it, so that a test can see what is built by then.
void onSingletonRequest(const char* which);

/// Details of the last emitted line.
struct LastLine {
    /// Arguments of `emitLog`.
    /// @{
    std::string threadId;
    int source = -1;
    long long secondsSinceEpoch = 0;
    /// @}
};
/// Returns: the last line emitted in this process.
LastLine lastLine();

}  // namespace SettingsHandlerTesting
