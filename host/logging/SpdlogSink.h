#pragma once

#include "VessaLogger/LogSink.h"

namespace SettingsHost {

enum class LogFormat { TEXT, JSON };

/// A sink that writes each line of at least `minimumLevel` to standard error at once.
/// TEXT: time, level, thread and the text with control characters escaped. JSON: one object a line with "time",
/// "level", "thread" and "text", valid for any bytes. Errors: a standard error that is closed or full loses the line
/// and nothing else.
VessaLogger::LogSink makeSpdlogSink(int minimumLevel, LogFormat format);

}  // namespace SettingsHost
