#include <chrono>

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHandlerKit {

void writeLog(VessaLogger::LogLevel level, const std::string& text) {
    auto& log = VessaLogger::Log::instance();
    log.emitLog(level, std::chrono::system_clock::now(), log.getThreadId(), "settings-host:" + text,
                VessaLogger::NATIVE_SERVICE);
}

}  // namespace SettingsHandlerKit
