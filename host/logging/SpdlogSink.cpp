#include "logging/SpdlogSink.h"

#include <memory>
#include <string>

#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_sinks.h>

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

std::string jsonMembers(const VessaLogger::LogLine& line) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key("level");
    writer.Int(line.level);
    writer.Key("thread");
    writer.String(withValidUtf8(line.threadId));
    writer.Key("text");
    writer.String(withValidUtf8(line.text));
    writer.EndObject();
    // The time is put before by the pattern, so the opening brace stands there too.
    return std::string(buffer.GetString() + 1, buffer.GetSize() - 1);
}

}  // namespace

VessaLogger::LogSink makeSpdlogSink(int minimumLevel, LogFormat format) {
    auto logger = std::make_shared<spdlog::logger>("settings-host", std::make_shared<spdlog::sinks::stderr_sink_st>());
    logger->set_level(spdlog::level::trace);
    logger->flush_on(spdlog::level::trace);
    logger->set_error_handler([](const std::string&) {});
    logger->set_pattern(format == LogFormat::JSON ? R"({"time":"%Y-%m-%dT%H:%M:%S.%e%z",%v)"
                                                  : "%Y-%m-%dT%H:%M:%S.%e%z %-5l %v");
    return [logger, minimumLevel, format](const VessaLogger::LogLine& line) {
        if (line.level < minimumLevel) {
            return;
        }
        const std::string text = format == LogFormat::JSON
                                     ? jsonMembers(line)
                                     : "[" + line.threadId + "] " + VessaLogger::escapeControlCharacters(line.text);
        logger->log(line.time, spdlog::source_loc{}, toSpdlog(line.level), text);
    };
}

}  // namespace SettingsHost
