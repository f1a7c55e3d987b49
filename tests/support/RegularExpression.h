#pragma once

#include <string>
#include <vector>

namespace TestSupport {

/// All of `text` against a regular expression of std::regex, which takes 2 s to compile, here once for all tests.
/// Returns: what the whole and each group matched; nothing when `text` does not match.
std::vector<std::string> matchOf(const std::string& text, const std::string& pattern);

}  // namespace TestSupport
