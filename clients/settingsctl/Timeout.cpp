#include "Timeout.h"

#include <charconv>

namespace SettingsCtl {

std::optional<std::chrono::milliseconds> timeoutFrom(const std::string& seconds) {
    double value = 0;
    const char* const end = seconds.data() + seconds.size();
    const auto result = std::from_chars(seconds.data(), end, value);
    // False for NaN, too.
    const bool isInRange = value >= 0.001 && value <= 86400;
    if (result.ec != std::errc() || result.ptr != end || !isInRange) {
        return std::nullopt;
    }
    return std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(value));
}

}  // namespace SettingsCtl
