#include "Metrics/MetricsCache.h"

#include <iostream>

namespace Metrics {

MetricsCache& MetricsCache::instance() {
    static MetricsCache cache;
    return cache;
}

void MetricsCache::setOrliaLocale(const std::string& locale) {
    std::cout << "own metrics cache: " << locale << "\n";
}

}  // namespace Metrics
