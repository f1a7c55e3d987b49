#include "VessaLogger/Log.h"

#include <algorithm>
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

/// The sink, and the mutex that serialises its calls.
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

bool mayBeginControlCharacter(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7f || byte == 0xc2;
}

std::string hexadecimal(const char* prefix, unsigned char byte) {
    constexpr char digits[] = "0123456789abcdef";
    return std::string(prefix) + digits[byte >> 4U] + digits[byte & 0xfU];
}

std::string escapeOf(unsigned char byte) {
    switch (byte) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return hexadecimal("\\x", byte);
    }
}

/// Never destroyed, so that other libraries can log until the process ends.
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
    // Most texts have no control character.
    const auto first = std::find_if(text.begin(), text.end(), mayBeginControlCharacter);
    std::string escaped(text.begin(), first);
    for (auto index = escaped.size(); index < text.size(); ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        const auto next = static_cast<unsigned char>(index + 1 < text.size() ? text[index + 1] : '\0');
        if (byte < 0x20 || byte == 0x7f) {
            escaped += escapeOf(byte);
        } else if (byte == 0xc2 && next >= 0x80 && next < 0xa0) {
            // The control characters U+0080 to U+009F, two bytes each in UTF-8.
            escaped += hexadecimal("\\u00", next);
            ++index;
        } else {
            escaped += text[index];
        }
    }
    return escaped;
}

}  // namespace VessaLogger
