#include "service/logging/LineFormat.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "Wire/ControlCharacters.h"
#include "Wire/ObjectWriter.h"

namespace SettingsHandlerKit {

namespace {

/// Padded to the width of "error".
const char* nameOf(VessaLogger::LogLevel level) {
    switch (level) {
        case VessaLogger::TRACE:
            return "trace";
        case VessaLogger::INFORMATION:
            return "info ";
        case VessaLogger::WARNING:
            return "warning";
        default:
            return "error";
    }
}

/// Local time: 2026-01-31T12:34:56.789+01:00.
std::string timeText(std::chrono::system_clock::time_point time) {
    // Rounded down, also before 1970, where a device may be whose clock is not set yet.
    const auto second = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t sinceEpoch = std::chrono::system_clock::to_time_t(second);
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time - second).count();
    std::tm local{};
    ::localtime_r(&sinceEpoch, &local);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%FT%T", &local);
    const long zone = std::labs(local.tm_gmtoff) / 60;
    std::array<char, 64> whole{};
    std::snprintf(whole.data(), whole.size(), "%s.%03d%c%02ld:%02ld", date.data(), static_cast<int>(milliseconds),
                  local.tm_gmtoff < 0 ? '-' : '+', zone / 60, zone % 60);
    return whole.data();
}

std::string jsonObject(const LogLine& line, const std::optional<CurrentRequest>& request) {
    Wire::ObjectWriter<> object;
    object.text("time", timeText(line.time));
    object.number("level", static_cast<int>(line.level));
    object.text("thread", line.threadId);
    object.text("text", line.text);
    if (request) {
        object.number("requestType", request->type);
    }
    if (request && !request->setting.empty()) {
        object.text("setting", request->setting);
    }
    return object.finish();
}

}  // namespace

LineFormat::LineFormat(LogFormat wantedFormat, std::shared_ptr<const RequestContext> requestContext)
    : format(wantedFormat), context(std::move(requestContext)) {}

std::string LineFormat::textOf(const LogLine& line) const {
    if (format == LogFormat::JSON) {
        return jsonObject(line, context->current()) + "\n";
    }
    return timeText(line.time) + " " + nameOf(line.level) + " [" + line.threadId + "] " +
           Wire::escapeControlCharacters(line.text) + "\n";
}

}  // namespace SettingsHandlerKit
