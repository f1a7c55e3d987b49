#include "support/RegularExpression.h"

#include <regex>

namespace TestSupport {

std::vector<std::string> matchOf(const std::string& text, const std::string& pattern) {
    std::smatch parts;
    std::regex_match(text, parts, std::regex(pattern));
    return {parts.begin(), parts.end()};
}

}  // namespace TestSupport
