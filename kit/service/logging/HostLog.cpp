#include "service/logging/HostLog.h"

#include <chrono>

namespace SettingsHandlerKit {

void logHost(VessaLogger::LogLevel level, const std::string& text) {
    auto& log = VessaLogger::Log::instance();
    log.emitLog(level, std::chrono::system_clock::now(), log.getThreadId(), "settings-host:" + text,
                VessaLogger::NATIVE_SERVICE);
}

}  // namespace SettingsHandlerKit
