#pragma once

#include <string_view>

namespace Wire {

/// May a client have this name: 1 to 64 characters of valid UTF-8, no control character among them?
bool isClientName(std::string_view name);

}  // namespace Wire
