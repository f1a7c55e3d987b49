#pragma once

#include <string_view>

namespace SettingsHandlerFuzz {

/// Is `text` well-formed UTF-8: no surrogates, no overlong forms, nothing above U+10FFFF?
bool isUtf8(std::string_view text);

}  // namespace SettingsHandlerFuzz
