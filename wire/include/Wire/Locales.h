#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Wire {

/// Returns: the locales of `text` as the handler sets them, the primary one first: the strings of a JSON array that are
/// not empty. Nothing when there is none, when `text` is something else, or an array of more than `maximumNesting`
/// levels. Threads: any.
std::optional<std::vector<std::string>> localesIn(const std::string& text);

}  // namespace Wire
