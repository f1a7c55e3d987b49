#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Benchmarks {

/// One operation of the handler, with its own surroundings, used for so long that every map and buffer has its size.
struct Operation {
    /// Parts divided by slashes, what it is first: "set/stored/changed".
    std::string name;
    std::function<void()> run;
};

/// All of them. `largestCache`: how many keys the cache is filled with at most.
std::vector<Operation> operations(int largestCache);

}  // namespace Benchmarks
