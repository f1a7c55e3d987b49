#pragma once

#include <string>

namespace SettingsHandlerKit {

/// A destination of log lines. Never blocks, and never throws because a line cannot be written.
class LogOutput {
public:
    LogOutput() = default;
    virtual ~LogOutput() = default;
    LogOutput(const LogOutput&) = delete;
    LogOutput& operator=(const LogOutput&) = delete;

    /// Writes one line; `line` includes the line end. Returns: false when it was lost.
    virtual bool write(const std::string& line) = 0;
};

}  // namespace SettingsHandlerKit
