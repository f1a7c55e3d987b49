#pragma once

#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include "VessaLogger/Log.h"

namespace Benchmarks::Floor {

/// Measures, then writes into a buffer of that size.
template <typename... Args>
std::string expanded(const char* format, Args... args) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    const int length = std::snprintf(nullptr, 0, format, args...);
    if (length < 0) {
        throw std::runtime_error("cannot format");
    }
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    const auto buffer = std::make_unique<char[]>(size);
    std::snprintf(buffer.get(), size, format, args...);
#pragma GCC diagnostic pop
    return std::string(buffer.get(), size - 1);
}

/// The steps that every log line of the handler must take, and no other.
template <typename... Args>
void logTagged(VessaLogger::Log& log, VessaLogger::LogLevel level, const char* tag, const char* format, Args... args) {
    const std::string text = expanded("%s:%s", tag, expanded(format, args...).c_str());
    const auto now = std::chrono::system_clock::now();
    log.emitLog(level, now, log.getThreadId(), text, VessaLogger::NATIVE_SERVICE);
}

template <typename... Args>
void logLine(VessaLogger::Log& log, VessaLogger::LogLevel level, const char* format, Args... args) {
    logTagged(log, level, "SettingsHandler", format, args...);
}

}  // namespace Benchmarks::Floor
