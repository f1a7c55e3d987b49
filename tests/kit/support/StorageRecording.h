#pragma once

#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/StorageObserver.h"

namespace SettingsHostTests {

/// Records the operations of a storage as text.
class StorageRecording : public SettingsHandlerKit::StorageObserver {
public:
    void storageOperation(SettingsHandlerKit::StorageOperation operation, bool succeeded,
                          std::chrono::nanoseconds duration) override {
        static const char* const names[] = {"read", "write", "remove", "clear"};
        lines.push_back(std::string(names[static_cast<int>(operation)]) + (succeeded ? "" : " failed"));
        timed = timed && duration.count() > 0;
    }

    std::vector<std::string> take() { return std::exchange(lines, {}); }

    /// Did every operation have a positive duration?
    bool timed = true;

private:
    std::vector<std::string> lines;
};

}  // namespace SettingsHostTests
