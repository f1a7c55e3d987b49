#pragma once

namespace TestSupport {

#ifdef PROGRAMS_HAVE_SANITIZER_address
/// The runtime of this build opens descriptors to look at objects, and ends the program when there are none.
constexpr bool sanitizersNeedDescriptors = true;
#else
constexpr bool sanitizersNeedDescriptors = false;
#endif
#ifdef PROGRAMS_HAVE_SANITIZER_thread
/// The runtime of this build delivers a signal at the program's next system call, which may block for long, or loses
/// it.
constexpr bool sanitizersHoldSignalsBack = true;
#else
constexpr bool sanitizersHoldSignalsBack = false;
#endif

/// Programs of this build are many times slower and larger than release builds: measurements of time and memory are
/// meaningless.
constexpr bool sanitized = sanitizersNeedDescriptors || sanitizersHoldSignalsBack;

/// Programs of this build are as large and as fast as release builds.
#if defined(NDEBUG)
constexpr bool asShipped = !sanitized;
#else
constexpr bool asShipped = false;
#endif

}  // namespace TestSupport
