#pragma once

#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/ValueObserver.h"

namespace SettingsHostTests {

/// Keeps the keys that it is notified of.
class ValueRecording : public SettingsHandlerKit::ValueObserver {
public:
    void valueChanged(const std::string& settingDBId) override { keys.push_back(settingDBId); }

    std::vector<std::string> take() { return std::exchange(keys, {}); }

private:
    std::vector<std::string> keys;
};

}  // namespace SettingsHostTests
