#include "SettingsHandlerTesting/platform/PlatformDoubles.h"

#include <atomic>
#include <mutex>
#include <sstream>
#include <thread>
#include <utility>

#include "DeviceAbstractionLayer/AppNameToStringMapping.h"
#include "Metrics/MetricsCache.h"
#include "VessaLogger/Log.h"

namespace SettingsHandlerTesting {

namespace {

struct State {
    std::atomic<Journal*> journal{nullptr};
    std::atomic<RecordingLog*> log{nullptr};
    std::mutex mutex;
    std::vector<std::string> requests;
    LastLine line;
};

State& state() {
    static State instance;
    return instance;
}

void request(const char* which) {
    onSingletonRequest(which);
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().requests.emplace_back(which);
}

}  // namespace

[[gnu::weak]] void onSingletonRequest(const char* /*which*/) {}

PlatformRecording::PlatformRecording(Journal& journal) {
    state().journal = &journal;
}

PlatformRecording::~PlatformRecording() {
    state().journal = nullptr;
}

RecordingLog::RecordingLog() {
    state().log = this;
}

RecordingLog::~RecordingLog() {
    state().log = nullptr;
}

std::vector<LogLine> RecordingLog::take(int leastLevel) {
    const std::lock_guard<std::mutex> lock(mutex);
    std::vector<LogLine> taken;
    for (auto& line : lines) {
        if (line.level >= leastLevel) {
            taken.push_back(std::move(line));
        }
    }
    lines.clear();
    return taken;
}

void RecordingLog::add(LogLine line) {
    const std::lock_guard<std::mutex> lock(mutex);
    lines.push_back(std::move(line));
}

std::vector<std::string> singletonRequests() {
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().requests;
}

LastLine lastLine() {
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().line;
}

}  // namespace SettingsHandlerTesting

namespace VessaLogger {

using SettingsHandlerTesting::state;

Log& Log::instance() {
    SettingsHandlerTesting::request("Log::instance");
    static Log log;
    return log;
}

std::string Log::getThreadId() {
    // Made once for each thread: every line of the library asks for it.
    static thread_local const std::string id = [] {
        std::ostringstream text;
        text << std::this_thread::get_id();
        return text.str();
    }();
    return id;
}

void Log::emitLog(LogLevel level, std::chrono::system_clock::time_point time, const std::string& threadId,
                  const std::string& text, LogSource source) {
    {
        const std::lock_guard<std::mutex> lock(state().mutex);
        state().line = {threadId, source,
                        std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count()};
    }
    if (auto* const log = state().log.load()) {
        log->add({level, text});
    }
    if (auto* const journal = state().journal.load()) {
        journal->add("log " + std::to_string(level) + " " + text);
    }
}

}  // namespace VessaLogger

namespace Metrics {

MetricsCache& MetricsCache::instance() {
    SettingsHandlerTesting::request("MetricsCache::instance");
    static MetricsCache cache;
    return cache;
}

void MetricsCache::setOrliaLocale(const std::string& locale) {
    if (auto* const journal = SettingsHandlerTesting::state().journal.load()) {
        journal->add("metricsCache.setOrliaLocale(" + locale + ")");
    }
}

}  // namespace Metrics

namespace DeviceAbstractionLayer {

std::unordered_map<AppName, std::string> AppNameToStringMapping{{AppName::VA_SETTINGS_APP, "settings-app"}};

}  // namespace DeviceAbstractionLayer
