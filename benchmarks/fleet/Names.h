#pragma once

#include <cstddef>
#include <string>

/// What both sides of the measurement know.
namespace Benchmarks {

constexpr const char* groupName = "fleet";
/// Changes at one television.
constexpr const char* changedKey = "captionsFontSize";
/// Is set at all of them.
constexpr const char* commandedKey = "captionsStyles";

inline std::string televisionName(std::size_t number) {
    return "tv-" + std::to_string(number);
}

}  // namespace Benchmarks
