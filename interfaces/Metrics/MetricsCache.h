#pragma once

#include <string>

namespace Metrics {

/// Values that are reported with every metric of the process. A component library of the application; this is the part
/// that the handler uses.
class [[gnu::visibility("default")]] MetricsCache {
public:
    MetricsCache(const MetricsCache&) = delete;
    MetricsCache& operator=(const MetricsCache&) = delete;

    /// Returns: the only instance in the process. The library requests it once, while it is loaded.
    static MetricsCache& instance();

    /// Sets the primary locale of the assistant, for example "en-US".
    /// Threads: any. Locks: none held by the library.
    void setOrliaLocale(const std::string& locale);

private:
    MetricsCache() = default;
    ~MetricsCache() = default;
};

}  // namespace Metrics
