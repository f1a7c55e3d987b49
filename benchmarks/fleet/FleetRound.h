#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace Benchmarks {

struct FleetEffort {
    std::vector<std::size_t> sizes{100, 1000, 3000, 10000};
    int changes = 500;
    int commands = 3;
    /// Televisions that do nothing but show that they are there, and for how many seconds.
    std::size_t idleTelevisions = 1000;
    int idleSeconds = 15;
};

/// Measurements of one round by their names, which end with the unit.
using FleetRound = std::map<std::string, double>;

/// What a fleet of `size` televisions at one broker takes, from the first connection to the one after the broker was
/// killed. Errors: `std::runtime_error`.
FleetRound measureFleet(std::size_t size, const FleetEffort& effort);

/// What a television takes that nobody uses.
FleetRound measureIdleFleet(const FleetEffort& effort);

/// What the program settings-mqtt takes with a settings-host, in the same words.
FleetRound measureProgram(const FleetEffort& effort);

namespace FleetNames {

constexpr const char* change = "change until a subscriber has it, median, ms";
constexpr const char* slowChange = "change until a subscriber has it, 99 %, ms";
constexpr const char* command = "group command until all have answered, ms";
constexpr const char* connected = "all connect at the same moment, until all is published, ms";
constexpr const char* connectedAgain = "broker killed and started again, until all is published, ms";
constexpr const char* bridgeMemory = "memory of a television in the bridge, KiB";
constexpr const char* brokerMemory = "memory of a television in the broker, KiB";

}  // namespace FleetNames

}  // namespace Benchmarks
