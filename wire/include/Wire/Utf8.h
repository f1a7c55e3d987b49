#pragma once

#include <string>
#include <string_view>

namespace Wire {

/// Is `text` well-formed UTF-8 (no surrogates, no overlong forms)?
bool isValidUtf8(std::string_view text);

/// Is `text` ASCII that JSON writes as it is: without control characters, quotation marks and backslashes?
bool isPlainAscii(std::string_view text);

/// `text` with U+FFFD in place of each byte that is not part of a character.
std::string withValidUtf8(std::string_view text);

}  // namespace Wire
