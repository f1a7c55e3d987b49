#include "Wire/LocalTime.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace Wire {

std::string localTimeText(std::chrono::system_clock::time_point time) {
    // Rounded down, also before 1970, where a device may be whose clock is not set yet.
    const auto second = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t sinceEpoch = std::chrono::system_clock::to_time_t(second);
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time - second).count();
    std::tm local{};
    ::localtime_r(&sinceEpoch, &local);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%FT%T", &local);
    const long zone = std::labs(local.tm_gmtoff) / 60;
    std::array<char, 64> whole{};
    std::snprintf(whole.data(), whole.size(), "%s.%03d%c%02ld:%02ld", date.data(), static_cast<int>(milliseconds),
                  local.tm_gmtoff < 0 ? '-' : '+', zone / 60, zone % 60);
    return whole.data();
}

}  // namespace Wire
