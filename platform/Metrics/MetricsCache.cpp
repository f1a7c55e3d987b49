#include "Metrics/MetricsCache.h"

#include <mutex>

#include "Metrics/CachedLocale.h"

namespace Metrics {

namespace {

struct Cache {
    std::mutex mutex;
    std::string orliaLocale;
};

Cache& cache() {
    static Cache instance;
    return instance;
}

}  // namespace

MetricsCache& MetricsCache::instance() {
    static MetricsCache metricsCache;
    return metricsCache;
}

void MetricsCache::setOrliaLocale(const std::string& locale) {
    const std::lock_guard<std::mutex> lock(cache().mutex);
    cache().orliaLocale = locale;
}

std::string cachedOrliaLocale() {
    const std::lock_guard<std::mutex> lock(cache().mutex);
    return cache().orliaLocale;
}

}  // namespace Metrics
