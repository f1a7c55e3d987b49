#pragma once

#include <string>

namespace Metrics {

/// Facts that every metric of the process is reported with. A component library of the application; this is the part
/// of it that the handler uses.
class [[gnu::visibility("default")]] MetricsCache {
public:
    MetricsCache(const MetricsCache&) = delete;
    MetricsCache& operator=(const MetricsCache&) = delete;

    /// The one instance of the process. The library asks for it once, while it is loaded.
    static MetricsCache& instance();

    /// Remembers the primary assistant locale, such as "en-US".
    /// Threads: any. Called without a lock of the library held.
    void setOrliaLocale(const std::string& locale);

private:
    MetricsCache() = default;
    ~MetricsCache() = default;
};

}  // namespace Metrics
