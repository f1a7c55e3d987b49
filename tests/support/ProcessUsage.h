#pragma once

#include <cstddef>

#include <sys/types.h>

namespace TestSupport {

/// What the kernel says about a process.

std::size_t openDescriptors(pid_t process);
/// What of its memory is in the machine's, in bytes.
struct ProcessMemory {
    std::size_t resident = 0;
    /// Its own, not read from a file.
    std::size_t anonymous = 0;
    /// Each page divided by the number of processes that share it.
    std::size_t proportional = 0;
};
/// Counted page by page, so that it is exact at that moment, while the figures below may lag behind.
ProcessMemory memoryOf(pid_t process);
/// Resident memory in bytes, and the most of it since the start or the last `forgetPeakMemory`.
std::size_t residentMemory(pid_t process);
std::size_t peakMemory(pid_t process);
void forgetPeakMemory(pid_t process);
/// How often the process went to sleep by itself: each time it had been woken, or had begun.
long voluntarySwitches(pid_t process);
/// Processor time used, in clock ticks.
long processorTicks(pid_t process);

}  // namespace TestSupport
