#pragma once

#include <chrono>
#include <random>

namespace SettingsMqtt {

/// The pauses between attempts to connect: each up to twice as long as the one before, from `first` up to `longest`,
/// and random, the longest of them twice the shortest, so that many devices do not come back at the same moment.
class Pauses {
public:
    using Milliseconds = std::chrono::milliseconds;
    /// A connection that lasted this long makes the next pause a first one.
    static constexpr Milliseconds steady{60000};

    Pauses(Milliseconds firstPause, Milliseconds longestPause, std::uint64_t seed)
        : first(firstPause), longest(longestPause), random(seed) {}

    /// The pause after a connection that lasted `connected`; zero after an attempt that failed.
    Milliseconds next(Milliseconds connected);

private:
    const Milliseconds first;
    const Milliseconds longest;
    Milliseconds upTo{0};
    std::mt19937_64 random;
};

}  // namespace SettingsMqtt
