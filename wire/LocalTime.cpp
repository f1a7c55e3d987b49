#include "Wire/LocalTime.h"

#include <cstdlib>
#include <ctime>

namespace Wire {

namespace {

/// Writes the last `digits` digits of a number that is not negative. Each line of a log has a time: printf would take a
/// multiple of the time that the rest of the line takes.
void write(std::string& text, std::size_t place, std::size_t digits, long number) {
    while (digits-- > 0) {
        text[place + digits] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
}

}  // namespace

std::string localTimeText(std::chrono::system_clock::time_point time) {
    // Rounded down, also before 1970, where a device may be whose clock is not set yet.
    const auto second = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t sinceEpoch = std::chrono::system_clock::to_time_t(second);
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(time - second).count();
    std::tm local{};
    ::localtime_r(&sinceEpoch, &local);
    const long zone = std::labs(local.tm_gmtoff) / 60;
    std::string text = "0000-00-00T00:00:00.000+00:00";
    write(text, 0, 4, local.tm_year + 1900L);
    write(text, 5, 2, local.tm_mon + 1L);
    write(text, 8, 2, local.tm_mday);
    write(text, 11, 2, local.tm_hour);
    write(text, 14, 2, local.tm_min);
    write(text, 17, 2, local.tm_sec);
    write(text, 20, 3, milliseconds);
    text[23] = local.tm_gmtoff < 0 ? '-' : '+';
    write(text, 24, 2, zone / 60);
    write(text, 27, 2, zone % 60);
    return text;
}

}  // namespace Wire
