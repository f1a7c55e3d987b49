#include "logging/LineFormat.h"

#include <utility>

#include <spdlog/details/log_msg.h>
#include <spdlog/pattern_formatter.h>

#include "Utils/Rapidjson.h"
#include "text/Utf8.h"

namespace SettingsHost {

namespace {

spdlog::level::level_enum toSpdlog(VessaLogger::LogLevel level) {
    switch (level) {
        case VessaLogger::TRACE:
            return spdlog::level::trace;
        case VessaLogger::INFORMATION:
            return spdlog::level::info;
        case VessaLogger::WARNING:
            return spdlog::level::warn;
        default:
            return spdlog::level::err;
    }
}

std::string jsonMembers(const VessaLogger::LogLine& line, const std::optional<RequestInHand>& request) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key("level");
    writer.Int(line.level);
    writer.Key("thread");
    writer.String(withValidUtf8(line.threadId));
    writer.Key("text");
    writer.String(withValidUtf8(line.text));
    if (request) {
        writer.Key("requestType");
        writer.Int(request->type);
    }
    if (request && !request->setting.empty()) {
        writer.Key("setting");
        writer.String(withValidUtf8(request->setting));
    }
    writer.EndObject();
    // The time is put before by the pattern, so the opening brace stands there too.
    return std::string(buffer.GetString() + 1, buffer.GetSize() - 1);
}

}  // namespace

struct LineFormat::Pattern {
    explicit Pattern(const std::string& pattern) : formatter(pattern, spdlog::pattern_time_type::local, "\n") {}

    spdlog::pattern_formatter formatter;
};

LineFormat::LineFormat(LogFormat wantedFormat, std::shared_ptr<const RequestContext> requestContext)
    : format(wantedFormat),
      context(std::move(requestContext)),
      pattern(std::make_unique<Pattern>(format == LogFormat::JSON ? R"({"time":"%Y-%m-%dT%H:%M:%S.%e%z",%v)"
                                                                  : "%Y-%m-%dT%H:%M:%S.%e%z %-5l %v")) {}

LineFormat::~LineFormat() = default;

std::string LineFormat::textOf(const VessaLogger::LogLine& line) {
    const std::string text = format == LogFormat::JSON
                                 ? jsonMembers(line, context->current())
                                 : "[" + line.threadId + "] " + VessaLogger::escapeControlCharacters(line.text);
    const spdlog::details::log_msg message(line.time, spdlog::source_loc{}, "settings-host", toSpdlog(line.level),
                                           text);
    spdlog::memory_buf_t formatted;
    pattern->formatter.format(message, formatted);
    return std::string(formatted.data(), formatted.size());
}

}  // namespace SettingsHost
