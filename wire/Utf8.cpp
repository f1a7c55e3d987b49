#include "Wire/Utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "Utils/Rapidjson.h"

namespace Wire {

namespace {

struct NullOutput {
    void Put(char /*unused*/) {}
};

/// Length in bytes of the character that `text` starts with; 0 when it does not start with one.
std::size_t characterLength(std::string_view text) {
    rapidjson::MemoryStream input(text.data(), text.size());
    NullOutput output;
    // At the end of the memory the stream answers NUL, which continues no character.
    return rapidjson::UTF8<>::Validate(input, output) ? input.Tell() : 0;
}

/// How many bytes of ASCII `text` starts with; nearly all texts are nothing else.
std::size_t asciiLength(std::string_view text) {
    std::size_t length = 0;
    for (std::uint64_t word = 0; text.size() - length >= sizeof(word); length += sizeof(word)) {
        std::memcpy(&word, text.data() + length, sizeof(word));
        if ((word & 0x8080808080808080U) != 0) {
            break;
        }
    }
    while (length < text.size() && static_cast<unsigned char>(text[length]) < 0x80) {
        ++length;
    }
    return length;
}

/// How many bytes of whole characters `text` starts with.
std::size_t validLength(std::string_view text) {
    std::size_t length = 0;
    for (;;) {
        length += asciiLength(text.substr(length));
        const std::size_t next = length == text.size() ? 0 : characterLength(text.substr(length));
        if (next == 0) {
            return length;
        }
        length += next;
    }
}

/// Are all eight bytes of `word` ASCII that JSON writes as it is?
bool hasPlainBytes(std::uint64_t word) {
    constexpr std::uint64_t each = 0x0101010101010101U;
    constexpr std::uint64_t highBits = 0x80U * each;
    // Sets the high bit of each byte below `limit`; where there is one, also some of bytes that are not.
    const auto below = [](std::uint64_t bytes, std::uint64_t limit) { return (bytes - limit * each) & ~bytes; };
    const std::uint64_t special =
        word | below(word, 0x20) | below(word ^ ('"' * each), 1) | below(word ^ ('\\' * each), 1);
    return (special & highBits) == 0;
}

}  // namespace

bool isPlainAscii(std::string_view text) {
    std::uint64_t word = 0;
    for (; text.size() >= sizeof(word); text.remove_prefix(sizeof(word))) {
        std::memcpy(&word, text.data(), sizeof(word));
        if (!hasPlainBytes(word)) {
            return false;
        }
    }
    word = 0x2020202020202020U;
    std::memcpy(&word, text.data(), text.size());
    return hasPlainBytes(word);
}

bool isValidUtf8(std::string_view text) {
    return validLength(text) == text.size();
}

std::string withValidUtf8(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (;;) {
        const std::size_t length = validLength(text);
        result += text.substr(0, length);
        if (length == text.size()) {
            return result;
        }
        result += "\xEF\xBF\xBD";
        text.remove_prefix(length + 1);
    }
}

}  // namespace Wire
