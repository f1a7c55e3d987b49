#include <iostream>

#include "VessaLogger/Log.h"

namespace VessaLogger {

Log& Log::instance() {
    static Log log;
    return log;
}

std::string Log::getThreadId() {
    return "the only one";
}

void Log::emitLog(LogLevel level, std::chrono::system_clock::time_point /*time*/, const std::string& threadId,
                  const std::string& text, LogSource /*source*/) {
    std::cout << "own logger: " << level << " " << threadId << " " << text << "\n";
}

}  // namespace VessaLogger
