#include "Times.h"

#include <array>
#include <ctime>

namespace SettingsCtl {

std::string localTime(std::int64_t milliseconds) {
    const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm parts{};
    std::array<char, 64> text{};
    ::localtime_r(&seconds, &parts);
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts)};
}

}  // namespace SettingsCtl
