#pragma once

#include <string>
#include <utility>
#include <vector>

#include "VessaLogger/LogSink.h"

namespace SettingsHostTests {

/// Records the log lines of the process during its lifetime, each as level and text.
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
