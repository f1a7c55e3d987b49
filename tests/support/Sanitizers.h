#pragma once

namespace TestSupport {

/// The runtime of this build's sanitizers opens descriptors to look at objects, and ends the program when there are
/// none.
#if defined(__has_feature)
constexpr bool sanitizersNeedDescriptors = __has_feature(address_sanitizer);
#else
constexpr bool sanitizersNeedDescriptors = false;
#endif

}  // namespace TestSupport
