#pragma once

#include <algorithm>
#include <chrono>
#include <random>

namespace Mqtt {

/// The pauses between attempts to connect: each up to twice as long as the one before, from `first` up to `longest`,
/// and random, the longest of them twice the shortest, so that many devices do not come back at the same moment.
class Pauses {
public:
    using Seconds = std::chrono::duration<double>;
    /// A connection that lasted this long makes the next pause a first one.
    static constexpr Seconds steady{60};

    Pauses(Seconds firstPause, Seconds longestPause, std::uint64_t seed)
        : first(firstPause), longest(longestPause), random(seed) {}

    /// The pause after a connection that lasted `connected`; zero after an attempt that failed.
    Seconds next(Seconds connected) {
        const bool isFirst = upTo == Seconds::zero() || connected >= steady;
        upTo = std::min(isFirst ? first : 2 * upTo, longest);
        return upTo * std::uniform_real_distribution<>(0.5, 1)(random);
    }

private:
    const Seconds first;
    const Seconds longest;
    Seconds upTo{0};
    std::mt19937_64 random;
};

}  // namespace Mqtt
