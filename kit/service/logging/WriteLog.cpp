#include <cerrno>
#include <chrono>

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHandlerKit {

std::string programName() {
    return program_invocation_short_name;
}

void writeLog(VessaLogger::LogLevel level, const std::string& text) {
    auto& log = VessaLogger::Log::instance();
    log.emitLog(level, std::chrono::system_clock::now(), log.getThreadId(), programName() + ":" + text,
                VessaLogger::NATIVE_SERVICE);
}

}  // namespace SettingsHandlerKit
