#pragma once

#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "Singletons.h"
#include "VessaLogger/Log.h"

/// Formatted logging for the sources of the handler.
namespace SettingsHandler {

/// The tag of the handler's log lines, except for three in Initialisation.cpp.
extern const std::string logTag;

/// Expands the printf-style `format` with up to three C strings, to a text of any length.
/// Errors: `std::runtime_error` when the format cannot be expanded.
template <typename... Args>
std::string formatText(const char* format, Args... args) {
    static_assert(sizeof...(Args) <= 3, "a log line takes at most three arguments");
    static_assert((std::is_convertible_v<Args, const char*> && ...), "a log line takes C strings only");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = std::snprintf(nullptr, 0, format, args...);
    if (length < 0) {
        throw std::runtime_error("Error formatting string.");
    }
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    const auto buffer = std::make_unique<char[]>(size);
    std::snprintf(buffer.get(), size, format, args...);
#pragma GCC diagnostic pop
    return std::string(buffer.get(), static_cast<std::size_t>(length));
}

/// Emits `tag`, a colon and the expanded `format` as one line of `level`. `%` is special in `format` only.
/// Errors: `std::runtime_error` when the format cannot be expanded; nothing is emitted then. Exceptions of the logger
/// pass. Threads: any. Locks: none; callers may hold theirs.
template <typename... Args>
void log(VessaLogger::Log& log, const std::string& tag, VessaLogger::LogLevel level, const char* format, Args... args) {
    const std::string text = formatText("%s:%s", tag.c_str(), formatText(format, args...).c_str());
    const auto now = std::chrono::system_clock::now();
    log.emitLog(level, now, log.getThreadId(), text, VessaLogger::NATIVE_SERVICE);
}

template <typename... Args>
void log(VessaLogger::Log& log, const std::string& tag, VessaLogger::LogLevel level, const std::string& format,
         Args... args) {
    ::SettingsHandler::log(log, tag, level, format.c_str(), args...);
}

template <typename... Args>
void logTrace(const std::string& tag, const char* format, Args... args) {
    log(logger, tag, VessaLogger::TRACE, format, args...);
}

template <typename... Args>
void logInformation(const std::string& tag, const char* format, Args... args) {
    log(logger, tag, VessaLogger::INFORMATION, format, args...);
}

template <typename... Args>
void logWarning(const std::string& tag, const char* format, Args... args) {
    log(logger, tag, VessaLogger::WARNING, format, args...);
}

template <typename... Args>
void logError(const std::string& tag, const char* format, Args... args) {
    log(logger, tag, VessaLogger::ERROR, format, args...);
}

}  // namespace SettingsHandler
