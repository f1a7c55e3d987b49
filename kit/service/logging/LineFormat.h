#pragma once

#include <memory>
#include <string>

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHandlerKit {

/// Formats log lines, including the line end, see `LogFormat`.
class LineFormat {
public:
    LineFormat(LogFormat format, std::shared_ptr<const RequestContext> context);

    std::string textOf(const LogLine& line) const;

private:
    LogFormat format;
    std::shared_ptr<const RequestContext> context;
};

}  // namespace SettingsHandlerKit
