#pragma once

#include <string>

#include "Wire/Frames.h"

namespace SettingsHost {

/// @name Replies to device commands
/// @{

/// An argument is missing or wrong.
inline std::string badArgument(const std::string& message) {
    return Wire::refusalFrame("bad-argument", message);
}

inline std::string notWritten() {
    return Wire::refusalFrame("not-written", "the simulated device could not save it");
}
/// @}

}  // namespace SettingsHost
