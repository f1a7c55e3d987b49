#pragma once

#include <vector>

#include "host/EndToEndRound.h"
#include "support/Results.h"

namespace Benchmarks {

/// Figures, ratios, curves and distributions of all rounds.
Results report(const std::vector<Round>& rounds, const Effort& effort);

}  // namespace Benchmarks
