#include "VessaLogger/Log.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>

#include <sys/syscall.h>
#include <unistd.h>

#include "VessaLogger/LogSink.h"

namespace VessaLogger {

namespace {

void writeToStandardError(const LogLine& line) {
    const std::string text =
        std::to_string(line.level) + " [" + line.threadId + "] " + escapeControlCharacters(line.text) + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

/// The sink and the mutex that lets one line through at a time.
class Output {
public:
    void setSink(LogSink newSink) {
        const std::lock_guard<std::mutex> lock(mutex);
        sink = newSink ? std::move(newSink) : LogSink(writeToStandardError);
    }

    void write(const LogLine& line) {
        const std::lock_guard<std::mutex> lock(mutex);
        sink(line);
    }

private:
    std::mutex mutex;
    LogSink sink = writeToStandardError;
};

/// Never destroyed, so that other libraries may log until the very end of the process.
Output& output() {
    static Output* const instance = std::make_unique<Output>().release();
    return *instance;
}

}  // namespace

Log& Log::instance() {
    static Log log;
    return log;
}

std::string Log::getThreadId() {
    thread_local const std::string threadId = std::to_string(::syscall(SYS_gettid));
    return threadId;
}

void Log::emitLog(LogLevel level, std::chrono::system_clock::time_point time, const std::string& threadId,
                  const std::string& text, LogSource source) {
    output().write({level, time, threadId, text, source});
}

void setLogSink(LogSink sink) {
    output().setSink(std::move(sink));
}

std::string escapeControlCharacters(const std::string& text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\n') {
            escaped += "\\n";
        } else if (character == '\r') {
            escaped += "\\r";
        } else if (character == '\t') {
            escaped += "\\t";
        } else if (byte < 0x20 || byte == 0x7f) {
            constexpr char digits[] = "0123456789abcdef";
            escaped += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xfU]};
        } else {
            escaped += character;
        }
    }
    return escaped;
}

}  // namespace VessaLogger
