#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Endurance {

/// One measurement of the host.
struct Sample {
    std::uint64_t requests = 0;
    double seconds = 0;
    std::size_t residentKibibytes = 0;
    std::size_t descriptors = 0;
};

/// The samples of a run. The first quarter is the warm-up, in which caches and the heap grow.
class MemoryCurve {
public:
    void add(const Sample& sample) { samples.push_back(sample); }
    const std::vector<Sample>& all() const { return samples; }

    /// How much the peak of resident memory after the warm-up exceeds that at its end, in KiB.
    std::size_t growth() const;
    /// Is the number of descriptors in the last sample the same as at the end of the warm-up?
    bool descriptorsAreSteady() const;

private:
    const Sample& endOfWarmUp() const { return samples.at(samples.size() / 4); }

    std::vector<Sample> samples;
};

}  // namespace Endurance
