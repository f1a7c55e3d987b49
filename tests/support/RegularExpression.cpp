#include "support/RegularExpression.h"

#include <stdexcept>

#include <regex.h>

namespace TestSupport {

// Not std::regex, which takes seconds to compile.
std::vector<std::string> matchOf(const std::string& text, const std::string& pattern) {
    regex_t expression{};
    if (::regcomp(&expression, ("^" + pattern + "$").c_str(), REG_EXTENDED) != 0) {
        throw std::invalid_argument("not a regular expression: " + pattern);
    }
    std::vector<regmatch_t> places(expression.re_nsub + 1);
    const bool matches = ::regexec(&expression, text.c_str(), places.size(), places.data(), 0) == 0;
    ::regfree(&expression);
    std::vector<std::string> parts;
    for (const regmatch_t& place : places) {
        if (matches) {
            const auto start = static_cast<std::size_t>(place.rm_so);
            parts.push_back(place.rm_so < 0 ? "" : text.substr(start, static_cast<std::size_t>(place.rm_eo) - start));
        }
    }
    return parts;
}

}  // namespace TestSupport
