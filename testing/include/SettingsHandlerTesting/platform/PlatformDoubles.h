#pragma once

#include <string>
#include <vector>

#include "SettingsHandlerTesting/Journal.h"

/// Link-time doubles of the logger, the metrics cache and the application table. Link
/// `SettingsHandler::testing_platform` instead of the platform libraries; the two cannot be linked together.
namespace SettingsHandlerTesting {

/// While it lives, the doubles write to `journal`: `log 1 SettingsHandler:isRequestValid` for a line of level 1,
/// `metricsCache.setOrliaLocale(en-US)`. Without one, lines are dropped. One at a time.
class PlatformRecording {
public:
    explicit PlatformRecording(Journal& journal);
    ~PlatformRecording();

    PlatformRecording(const PlatformRecording&) = delete;
    PlatformRecording& operator=(const PlatformRecording&) = delete;
};

/// What the doubles were asked while the library was loaded, in order: "Log::instance", "MetricsCache::instance".
std::vector<std::string> singletonRequests();

/// Called by each double's `instance()` if the program defines it; lets a test look at what is built by then.
void onSingletonRequest(const char* which);

/// The details of the line emitted last.
struct LastLine {
    std::string threadId;
    int source = -1;
    long long secondsSinceEpoch = 0;
};
LastLine lastLine();

}  // namespace SettingsHandlerTesting
