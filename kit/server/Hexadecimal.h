#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace SettingsHandlerKit {

/// `size` bytes in lower-case hexadecimal.
inline std::string hexadecimal(const unsigned char* bytes, std::size_t size) {
    constexpr const char* digits = "0123456789abcdef";
    std::string text;
    for (std::size_t place = 0; place < size; ++place) {
        text += digits[bytes[place] >> 4U];
        text += digits[bytes[place] & 15U];
    }
    return text;
}

inline std::string hexadecimal(std::string_view bytes) {
    return hexadecimal(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

}  // namespace SettingsHandlerKit
