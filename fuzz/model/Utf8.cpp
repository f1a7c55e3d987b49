#include "model/Utf8.h"

#include <array>
#include <cstdint>

namespace SettingsHandlerFuzz {

namespace {

/// The number of bytes that follow `first`; 4 when no character starts with it.
std::size_t followersOf(std::uint8_t first) {
    if (first < 0x80) {
        return 0;
    }
    if (first >= 0xc0 && first < 0xe0) {
        return 1;
    }
    if (first >= 0xe0 && first < 0xf0) {
        return 2;
    }
    return first >= 0xf0 && first < 0xf8 ? 3 : 4;
}

}  // namespace

bool isUtf8(std::string_view text) {
    constexpr std::array<std::uint32_t, 4> smallest{0, 0x80, 0x800, 0x10000};
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto first = static_cast<std::uint8_t>(text[i]);
        const std::size_t followers = followersOf(first);
        if (followers > 3 || i + followers >= text.size()) {
            return false;
        }
        std::uint32_t point = followers == 0 ? first : first & (0x3fU >> followers);
        for (std::size_t k = 0; k < followers; ++k) {
            const auto next = static_cast<std::uint8_t>(text[++i]);
            if ((next & 0xc0U) != 0x80) {
                return false;
            }
            point = (point << 6U) | (next & 0x3fU);
        }
        const bool isSurrogate = point >= 0xd800 && point < 0xe000;
        if (point < smallest[followers] || point > 0x10ffff || isSurrogate) {
            return false;
        }
    }
    return true;
}

}  // namespace SettingsHandlerFuzz
