#pragma once

#include <cstddef>

#include <sys/types.h>

namespace TestSupport {

/// What the kernel says about a process.

std::size_t openDescriptors(pid_t process);
/// Resident memory in bytes, and the most of it since the start or the last `forgetPeakMemory`.
std::size_t residentMemory(pid_t process);
std::size_t peakMemory(pid_t process);
void forgetPeakMemory(pid_t process);
/// Processor time used, in clock ticks.
long processorTicks(pid_t process);

}  // namespace TestSupport
