#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Benchmarks {

/// One operation of the handler and the least that it may consist of, each with surroundings of its own, used for so
/// long that every map and buffer has its size. Both are given the same inputs.
struct Operation {
    /// Parts divided by slashes, what it is first: "set/stored/changed".
    std::string name;
    std::function<void()> handler;
    std::function<void()> floor;
};

/// All of them. `largestCache`: how many keys the cache is filled with at most.
std::vector<Operation> operations(int largestCache);

}  // namespace Benchmarks
