#include <iostream>
#include <mutex>

#include "DeviceAbstractionLayer/AppNameToStringMapping.h"
#include "Metrics/MetricsCache.h"
#include "VessaLogger/Log.h"

namespace VessaLogger {

Log& Log::instance() {
    static Log log;
    return log;
}

std::string Log::getThreadId() {
    return "";
}

void Log::emitLog(LogLevel level, std::chrono::system_clock::time_point, const std::string&, const std::string& text,
                  LogSource) {
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    if (level >= ERROR) {
        std::cerr << "error: " << text << std::endl;
    }
}

}  // namespace VessaLogger

namespace Metrics {

MetricsCache& MetricsCache::instance() {
    static MetricsCache cache;
    return cache;
}

void MetricsCache::setOrliaLocale(const std::string& locale) {
    std::cerr << "metrics: locale " << locale << std::endl;
}

}  // namespace Metrics

namespace DeviceAbstractionLayer {

std::unordered_map<AppName, std::string> AppNameToStringMapping{{AppName::VA_SETTINGS_APP, "assistant"}};

}  // namespace DeviceAbstractionLayer
