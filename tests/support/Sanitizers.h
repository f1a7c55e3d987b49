#pragma once

namespace TestSupport {

#if defined(__has_feature)
/// The runtime of this build opens descriptors to look at objects, and ends the program when there are none.
constexpr bool sanitizersNeedDescriptors = __has_feature(address_sanitizer);
/// The runtime of this build delivers a signal at the program's next system call, which may block for long, or loses
/// it.
constexpr bool sanitizersHoldSignalsBack = __has_feature(thread_sanitizer);
#else
constexpr bool sanitizersNeedDescriptors = false;
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
