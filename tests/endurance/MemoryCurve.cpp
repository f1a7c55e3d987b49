#include "MemoryCurve.h"

#include <algorithm>

namespace Endurance {

std::size_t MemoryCurve::growth() const {
    const std::size_t before = endOfWarmUp().residentKibibytes;
    std::size_t most = before;
    for (const auto& sample : samples) {
        if (sample.requests > endOfWarmUp().requests) {
            most = std::max(most, sample.residentKibibytes);
        }
    }
    return most - before;
}

bool MemoryCurve::descriptorsAreSteady() const {
    return samples.back().descriptors == endOfWarmUp().descriptors;
}

}  // namespace Endurance
