#pragma once

#include <string>
#include <vector>

namespace TestSupport {

/// All of `text` against an extended regular expression of POSIX (`[0-9]` in place of `\d`).
/// Returns: what the whole and each group matched; nothing when `text` does not match.
std::vector<std::string> matchOf(const std::string& text, const std::string& pattern);

}  // namespace TestSupport
