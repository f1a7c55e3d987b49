#include "Wire/LocalTime.h"

#include <cstdlib>
#include <ctime>

namespace Wire {

namespace {

/// Appends `digits` digits of a number that is not negative. Each line of a log has a time: printf would take a
/// multiple of the time that the rest of the line takes.
void append(std::string& text, long number, int digits) {
    if (digits > 1) {
        append(text, number / 10, digits - 1);
    }
    text += static_cast<char>('0' + number % 10);
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
    std::string text;
    text.reserve(29);
    const auto add = [&text](char separator, long number) {
        text += separator;
        append(text, number, 2);
    };
    append(text, local.tm_year + 1900L, 4);
    add('-', local.tm_mon + 1L);
    add('-', local.tm_mday);
    add('T', local.tm_hour);
    add(':', local.tm_min);
    add(':', local.tm_sec);
    text += '.';
    append(text, milliseconds, 3);
    add(local.tm_gmtoff < 0 ? '-' : '+', zone / 60);
    add(':', zone % 60);
    return text;
}

}  // namespace Wire
