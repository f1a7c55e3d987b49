#pragma once

#include <map>
#include <string>
#include <vector>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"

namespace SettingsHandlerFuzz {

/// A checked handler that can be initialised with the values that another one has read.
class QuickHandler : public SettingsHandlerKit::CheckedSettingsHandler {
public:
    using Values = std::map<std::string, std::string>;
    using CheckedSettingsHandler::CheckedSettingsHandler;

    /// Returns: the values that were read.
    Values initializeAndTell() {
        Values values;
        reading = &values;
        initializeSettings();
        reading = nullptr;
        return values;
    }

    /// Reads nothing.
    void initializeWith(const Values& values) {
        given = &values;
        initializeSettings();
        given = nullptr;
    }

    Values getSettings(const std::vector<std::string>& names) override {
        if (given != nullptr) {
            return *given;
        }
        Values values = CheckedSettingsHandler::getSettings(names);
        if (reading != nullptr) {
            *reading = values;
        }
        return values;
    }

private:
    Values* reading = nullptr;
    const Values* given = nullptr;
};

}  // namespace SettingsHandlerFuzz
