#pragma once

#include <memory>
#include <string>

#include "service/logging/LogLine.h"
#include "service/logging/RequestContext.h"

namespace SettingsHandlerKit {

enum class LogFormat { TEXT, JSON };

/// Formats log lines, including the line end.
/// TEXT: time, level, thread, and the text with control characters escaped. JSON: one object per line with "time",
/// "level", "thread" and "text", valid JSON for any bytes; while a request is handled "requestType", and "setting" if
/// the request names one.
class LineFormat {
public:
    LineFormat(LogFormat format, std::shared_ptr<const RequestContext> context);

    std::string textOf(const LogLine& line) const;

private:
    LogFormat format;
    std::shared_ptr<const RequestContext> context;
};

}  // namespace SettingsHandlerKit
