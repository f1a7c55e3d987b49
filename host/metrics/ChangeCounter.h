#pragma once

#include <map>
#include <string>

#include "Metrics/MetricsDelegateInterface.h"

namespace SettingsHost {

/// Counts changes by setting. The values in the names it is given are dropped, so that names of rooms and phones never
/// leave through metrics, and unknown settings are counted together, so that it cannot grow. One thread only.
class ChangeCounter : public Metrics::MetricsDelegateInterface {
public:
    /// The setting key under which unknown settings are counted.
    static constexpr const char* other = "other";

    /// Does nothing: every event repeats a counter.
    void recordEvent(const std::string& group, const std::string& source,
                     const std::unordered_map<std::string, std::string>& attributes) override;
    void recordCounter(const std::string& name, int first, int second, double third) override;

    /// Changes so far by setting key; settings without a change are left out.
    const std::map<std::string, unsigned long>& counts() const { return changes; }

private:
    std::map<std::string, unsigned long> changes;
};

}  // namespace SettingsHost
