#pragma once

#include <memory>
#include <string>

#include "service/logging/LogLine.h"
#include "service/logging/RequestContext.h"

namespace SettingsHost {

enum class LogFormat { TEXT, JSON };

/// Makes text of log lines, the end of the line included.
/// TEXT: time, level, thread and the text with control characters escaped. JSON: one object a line with "time",
/// "level", "thread" and "text", valid for any bytes; while a request is in hand "requestType", and "setting" when it
/// is about one.
class LineFormat {
public:
    LineFormat(LogFormat format, std::shared_ptr<const RequestContext> context);

    std::string textOf(const LogLine& line) const;

private:
    LogFormat format;
    std::shared_ptr<const RequestContext> context;
};

}  // namespace SettingsHost
