#pragma once

#include <string>
#include <utility>
#include <vector>

#include "VessaLogger/LogSink.h"

namespace SettingsHostTests {

/// Collects the lines of the process while it lives, each as its level and text.
class LogRecording {
public:
    LogRecording() {
        VessaLogger::setLogSink([this](const VessaLogger::LogLine& line) {
            recorded.push_back(std::to_string(line.level) + " " + line.text);
        });
    }
    ~LogRecording() { VessaLogger::setLogSink({}); }
    LogRecording(const LogRecording&) = delete;
    LogRecording& operator=(const LogRecording&) = delete;

    std::vector<std::string> take() { return std::exchange(recorded, {}); }

private:
    std::vector<std::string> recorded;
};

}  // namespace SettingsHostTests
