#include "service/logging/LineFormat.h"

#include <utility>

#include "Wire/ControlCharacters.h"
#include "Wire/LocalTime.h"
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

std::string jsonObject(const LogLine& line, const std::optional<CurrentRequest>& request) {
    Wire::ObjectWriter<> object;
    object.text("time", Wire::localTimeText(line.time));
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
    std::string text = Wire::localTimeText(line.time);
    // Of the usual line.
    text.reserve(text.size() + line.text.size() + 32);
    return text.append(" ")
        .append(nameOf(line.level))
        .append(" [")
        .append(line.threadId)
        .append("] ")
        .append(Wire::escapeControlCharacters(line.text))
        .append("\n");
}

}  // namespace SettingsHandlerKit
