#pragma once

#include <cstddef>

#include <sys/types.h>

namespace Endurance {

/// Resident memory of a running process, in KiB. Errors: throws `std::runtime_error` when there is none.
std::size_t residentKibibytes(pid_t process);

/// How many descriptors it has open. Errors: as above.
std::size_t openDescriptors(pid_t process);

}  // namespace Endurance
