#pragma once

#include <map>
#include <optional>
#include <string>

#include "SettingsHandlerKit/StateStore.h"

namespace SettingsHostTests {

/// A state store in memory that can fail on request.
class MemoryState : public SettingsHandlerKit::StateStore {
public:
    std::map<std::string, std::string> values;
    bool refuses = false;

    std::optional<std::string> load(const std::string& key) override {
        const auto entry = values.find(key);
        return entry == values.end() ? std::nullopt : std::optional(entry->second);
    }

    bool save(const std::string& key, const std::string& value) override {
        if (!refuses) {
            values[key] = value;
        }
        return !refuses;
    }
};

}  // namespace SettingsHostTests
