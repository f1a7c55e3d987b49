#pragma once

#include <string>

namespace Metrics {

/// The locale that the metrics cache was last given; empty until then. Threads: any.
[[gnu::visibility("default")]] std::string cachedOrliaLocale();

}  // namespace Metrics
