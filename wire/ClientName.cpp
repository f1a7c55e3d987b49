#include "Wire/ClientName.h"

#include <algorithm>

#include "Wire/ControlCharacters.h"
#include "Wire/Utf8.h"

namespace Wire {

bool isClientName(std::string_view name) {
    constexpr int longestName = 64;
    const auto startsCharacter = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80; };
    const auto characters = std::count_if(name.begin(), name.end(), startsCharacter);
    return characters >= 1 && characters <= longestName && isValidUtf8(name) && escapeControlCharacters(name) == name;
}

}  // namespace Wire
