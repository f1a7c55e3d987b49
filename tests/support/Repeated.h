#pragma once

#include <cstddef>
#include <string>

namespace TestSupport {

inline std::string repeated(const std::string& text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t number = 0; number < count; ++number) {
        result += text;
    }
    return result;
}

}  // namespace TestSupport
