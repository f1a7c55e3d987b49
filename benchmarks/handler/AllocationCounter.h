#pragma once

namespace Benchmarks {

/// How often the program has asked for memory since it began, and for how much in all.
struct HeapRequests {
    long allocations = 0;
    long bytes = 0;
};

HeapRequests heapRequests();

}  // namespace Benchmarks
