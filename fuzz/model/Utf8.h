#pragma once

#include <string>

namespace SettingsHandlerFuzz {

/// Is `text` well-formed UTF-8: no surrogates, no overlong forms, nothing above U+10FFFF?
bool isUtf8(const std::string& text);

}  // namespace SettingsHandlerFuzz
