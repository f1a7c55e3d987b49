#pragma once

#include <cstddef>

#include <sys/types.h>

namespace TestSupport {

// Resource usage of a process, as the kernel reports it.

std::size_t openDescriptors(pid_t process);
/// Resident memory in bytes.
struct ProcessMemory {
    std::size_t resident = 0;
    /// Not backed by a file.
    std::size_t anonymous = 0;
    /// Each page divided by the number of processes that share it.
    std::size_t proportional = 0;
};
/// Counted page by page and therefore exact; the counters below may lag behind.
ProcessMemory memoryOf(pid_t process);
/// Resident memory in bytes, and its peak since the start or the last `forgetPeakMemory`.
std::size_t residentMemory(pid_t process);
std::size_t peakMemory(pid_t process);
void forgetPeakMemory(pid_t process);
/// How often the process went to sleep voluntarily.
long voluntarySwitches(pid_t process);
/// Processor time used, in clock ticks.
long processorTicks(pid_t process);
/// Exactly. Errors: `std::runtime_error` when the process has ended.
double processorMicroseconds(pid_t process);

}  // namespace TestSupport
