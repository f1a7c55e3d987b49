#pragma once

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHandlerKit {

inline void logHost(VessaLogger::LogLevel level, const std::string& text) {
    writeLog(level, text);
}

}  // namespace SettingsHandlerKit
