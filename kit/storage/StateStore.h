#pragma once

#include <optional>
#include <string>

namespace SettingsHost {

/// Where the simulated voice SDK and device keep their state over a restart.
class StateStore {
public:
    StateStore() = default;
    StateStore(const StateStore&) = delete;
    StateStore& operator=(const StateStore&) = delete;
    virtual ~StateStore() = default;

    /// What was saved under `key`; nothing when nothing was, or it cannot be read.
    virtual std::optional<std::string> load(const std::string& key) = 0;
    /// Returns: false when it could not be saved (logged at level 3); what was saved before is then still there.
    virtual bool save(const std::string& key, const std::string& value) = 0;
};

}  // namespace SettingsHost
