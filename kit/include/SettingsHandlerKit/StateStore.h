#pragma once

#include <optional>
#include <string>

namespace SettingsHandlerKit {

/// Persistent state that is not a setting, such as that of the simulation.
class StateStore {
public:
    StateStore() = default;
    StateStore(const StateStore&) = delete;
    StateStore& operator=(const StateStore&) = delete;
    virtual ~StateStore() = default;

    /// The value of `key`; nothing when there is none or it cannot be read.
    virtual std::optional<std::string> load(const std::string& key) = 0;
    /// Returns: false when it could not be saved (logged at level 3); the old value stays then.
    virtual bool save(const std::string& key, const std::string& value) = 0;
};

}  // namespace SettingsHandlerKit
