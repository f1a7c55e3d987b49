#pragma once

#include <string>
#include <unordered_map>

namespace Metrics {

/// The sink for the library's usage metrics.
///
/// For every change the library records one counter and then one event, on the thread that made the change, without a
/// lock. The names contain the values of settings in full.
///
/// The implementer returns quickly.
class [[gnu::visibility("default")]] MetricsDelegateInterface {
protected:
    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual void reserved3() {}

public:
    /// Records an event of `group` from `source`. `attributes`: names and values.
    virtual void recordEvent(const std::string& group, const std::string& source,
                             const std::unordered_map<std::string, std::string>& attributes) = 0;

    /// Increments the counter `name`. The library always passes 0, 1 and 1.0; the implementer defines their meaning.
    virtual void recordCounter(const std::string& name, int first, int second, double third) = 0;

    virtual ~MetricsDelegateInterface() = default;
};

}  // namespace Metrics
