#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Endurance {

/// The host's figures at one moment.
struct Sample {
    std::uint64_t requests = 0;
    double seconds = 0;
    std::size_t residentKibibytes = 0;
    std::size_t descriptors = 0;
};

/// The samples of a run, of which the first quarter is the warm-up: caches, pools and the heap find their size.
class MemoryCurve {
public:
    void add(const Sample& sample) { samples.push_back(sample); }
    const std::vector<Sample>& all() const { return samples; }

    /// By how much the most resident memory after the warm-up exceeds that at its end, in KiB.
    std::size_t growth() const;
    /// Had the host the same number of descriptors at its last sample as at the end of the warm-up?
    bool descriptorsAreSteady() const;

private:
    const Sample& endOfWarmUp() const { return samples.at(samples.size() / 4); }

    std::vector<Sample> samples;
};

}  // namespace Endurance
