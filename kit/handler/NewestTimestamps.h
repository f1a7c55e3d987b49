#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace SettingsHandlerKit {

/// The newest accepted time stamp of each setting, as the handler records it: all unknown keys share one. Threads: one.
class NewestTimestamps {
public:
    void record(const std::string& settingDBId, long timestamp);
    std::optional<long> find(const std::string& settingDBId) const;
    /// By key; unknown ones have the empty key.
    std::map<std::string, long> all() const { return {timestamps.begin(), timestamps.end()}; }

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    std::size_t indexOf(const std::string& settingDBId) const;

    std::vector<std::pair<std::string, long>> timestamps;
};

}  // namespace SettingsHandlerKit
