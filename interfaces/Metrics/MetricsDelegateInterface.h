#pragma once

#include <string>
#include <unordered_map>

namespace Metrics {

/// Where the library's usage metrics go.
///
/// What the library does: records one counter and then one event for every accepted change, on the thread that made
/// the change, holding no lock. The values in the names are the settings' own values, however long.
///
/// What the implementer does: returns soon. The results are not looked at.
class [[gnu::visibility("default")]] MetricsDelegateInterface {
protected:
    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual void reserved3() {}

public:
    /// Records an event of `group` from `source`. `attributes`: names and values that describe it.
    virtual void recordEvent(const std::string& group, const std::string& source,
                             const std::unordered_map<std::string, std::string>& attributes) = 0;

    /// Counts `name`. The library always passes 0, 1 and 1.0; what they mean is the implementer's.
    virtual void recordCounter(const std::string& name, int first, int second, double third) = 0;

    virtual ~MetricsDelegateInterface() = default;
};

}  // namespace Metrics
