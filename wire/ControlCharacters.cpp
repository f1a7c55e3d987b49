#include "Wire/ControlCharacters.h"

#include <algorithm>

namespace Wire {

namespace {

/// The first byte of U+0080 to U+00BF in UTF-8.
constexpr unsigned char twoByteLead = 0xc2;

bool isControlByte(unsigned char byte) {
    return byte < 0x20 || byte == 0x7f;
}

bool mayNeedEscape(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return isControlByte(byte) || byte == twoByteLead || byte == '\\';
}

std::string hexadecimal(const char* prefix, unsigned char byte) {
    constexpr char digits[] = "0123456789abcdef";
    return std::string(prefix) + digits[byte >> 4U] + digits[byte & 0xfU];
}

std::string escapeOf(unsigned char byte) {
    switch (byte) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return hexadecimal("\\x", byte);
    }
}

}  // namespace

std::string escapeControlCharacters(std::string_view text, Backslash backslash) {
    // Most texts need no escape at all.
    const auto* const first = std::find_if(text.begin(), text.end(), mayNeedEscape);
    std::string escaped(text.begin(), first);
    for (auto index = escaped.size(); index < text.size(); ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        const auto next = static_cast<unsigned char>(index + 1 < text.size() ? text[index + 1] : '\0');
        if (isControlByte(byte)) {
            escaped += escapeOf(byte);
        } else if (byte == twoByteLead && next >= 0x80 && next < 0xa0) {
            escaped += hexadecimal("\\u00", next);
            ++index;
        } else if (byte == '\\' && backslash == Backslash::DOUBLED) {
            escaped += "\\\\";
        } else {
            escaped += text[index];
        }
    }
    return escaped;
}

}  // namespace Wire
