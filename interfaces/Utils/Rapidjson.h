#pragma once

/// The one configuration of the JSON library. Every file that needs the library includes this header,
/// so that all of them agree on it.
///
/// - Names and values may be given as `std::string`.
/// - A failed precondition (asking an object for its array elements, say) prints where it happened and ends
///   the process with `abort`, in every build type: a release build never runs on into undefined behaviour.
/// - Texts are parsed iteratively with `Utils::jsonParseFlags`: the language is exactly that of the library's
///   default flags, and no depth of nesting can exhaust the stack.

#include <cstdio>
#include <cstdlib>

namespace Utils {

/// Reports the failed precondition on standard error and ends the process.
[[noreturn]] inline void failJsonPrecondition(const char* condition, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: JSON precondition failed: %s\n", file, line, condition);
    std::abort();
}

}  // namespace Utils

#ifndef RAPIDJSON_HAS_STDSTRING
#define RAPIDJSON_HAS_STDSTRING 1
#endif
#ifndef RAPIDJSON_ASSERT
#define RAPIDJSON_ASSERT(condition) \
    ((condition) ? static_cast<void>(0) : ::Utils::failJsonPrecondition(#condition, __FILE__, __LINE__))
#endif

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Utils {

/// Flags for parsing any text that comes from outside.
constexpr unsigned jsonParseFlags = rapidjson::kParseDefaultFlags | rapidjson::kParseIterativeFlag;

}  // namespace Utils
