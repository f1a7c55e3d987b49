#include <cstdio>
#include <string>

#include <valgrind/callgrind.h>

#include "AllocationCounter.h"
#include "Operations.h"
#include "VessaLogger/LogSink.h"

// Prints a line for every operation: name, allocations and bytes of the heap, each for one turn. Under callgrind (with
// --collect-atstart=no) it also leaves the instructions of `turns` turns in a dump named like the line. check-counts
// runs it both ways.

namespace {

constexpr int turns = 100;

void count(const std::string& name, const std::function<void()>& run) {
    const auto before = Benchmarks::heapRequests();
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    for (int turn = 0; turn < turns; ++turn) {
        run();
    }
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name.c_str());
    const auto after = Benchmarks::heapRequests();
    std::printf("%s\t%.2f\t%.1f\n", name.c_str(), static_cast<double>(after.allocations - before.allocations) / turns,
                static_cast<double>(after.bytes - before.bytes) / turns);
}

}  // namespace

int main() {
    VessaLogger::setLogSink([](const VessaLogger::LogLine&) {});
    for (const auto& operation : Benchmarks::operations(1000)) {
        count(operation.name, operation.run);
    }
    return 0;
}
