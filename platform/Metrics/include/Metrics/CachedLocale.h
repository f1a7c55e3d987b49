#pragma once

#include <string>

namespace Metrics {

/// Returns: the last locale that was set in the metrics cache; empty before that. Threads: any.
[[gnu::visibility("default")]] std::string cachedOrliaLocale();

}  // namespace Metrics
