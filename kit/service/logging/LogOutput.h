#pragma once

#include <string>

namespace SettingsHost {

/// Where lines of text go. Never waits for whoever reads them, and never throws because a line cannot be written.
class LogOutput {
public:
    LogOutput() = default;
    virtual ~LogOutput() = default;
    LogOutput(const LogOutput&) = delete;
    LogOutput& operator=(const LogOutput&) = delete;

    /// Writes one line with its end. Returns: false when it was lost.
    virtual bool write(const std::string& line) = 0;
};

}  // namespace SettingsHost
