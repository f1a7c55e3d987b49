#pragma once

#include <string>
#include <string_view>

namespace Wire {

enum class Backslash { AS_IT_IS, DOUBLED };

/// `text` as one printable line: each control character (U+0000 to U+001F, DEL, U+0080 to U+009F), line ends included,
/// becomes an escape such as `\n`, `\x1b` or `\u009b`. Other bytes stay as they are. With `Backslash::DOUBLED`
/// different texts stay different.
std::string escapeControlCharacters(std::string_view text, Backslash backslash = Backslash::AS_IT_IS);

}  // namespace Wire
