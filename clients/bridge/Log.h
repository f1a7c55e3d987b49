#pragma once

#include <string>

namespace SettingsBridge {

enum class LogLevel { TRACE = 0, INFORMATION = 1, WARNING = 2, ERROR = 3 };

/// Writes lines to standard error: time, level and text, or, if standard error is connected to systemd's journal,
/// priority and text. Control characters are escaped. A line that cannot be written is lost.
class Log {
public:
    /// Lines of lower levels than `minimumLevel` are not written.
    explicit Log(int minimumLevel);

    void write(LogLevel level, const std::string& text) const;
    /// As a function, for what knows the numbers of levels alone.
    void operator()(int level, const std::string& text) const { write(static_cast<LogLevel>(level), text); }

private:
    int minimum;
    bool toJournal;
};

}  // namespace SettingsBridge
