#pragma once

namespace TestSupport {

#if defined(__has_feature)
/// The runtime of this build opens descriptors to look at objects, and ends the program when there are none.
constexpr bool sanitizersNeedDescriptors = __has_feature(address_sanitizer);
/// The runtime of this build hands a signal on at the program's next call, which may be one that waits for long, or
/// forgets it.
constexpr bool sanitizersHoldSignalsBack = __has_feature(thread_sanitizer);
#else
constexpr bool sanitizersNeedDescriptors = false;
constexpr bool sanitizersHoldSignalsBack = false;
#endif

/// Programs of this build are many times slower and larger than what is shipped: figures of time and memory say nothing
/// about it.
constexpr bool sanitized = sanitizersNeedDescriptors || sanitizersHoldSignalsBack;

/// Programs of this build are as large and as fast as what is shipped.
#if defined(__OPTIMIZE__)
constexpr bool asShipped = !sanitized;
#else
constexpr bool asShipped = false;
#endif

}  // namespace TestSupport
