#pragma once

/// \file
/// The one configuration of the JSON library. Every file that needs the library includes this header,
/// so that all of them agree on it.
///
/// - Names and values may be given as `std::string`.
/// - A failed precondition (asking an object for its array elements, say) prints where it happened and ends
///   the process with `abort`, in every build type: a release build never runs on into undefined behaviour.
/// - Texts are parsed iteratively with `Utils::jsonParseFlags`: the language is exactly that of the library's
///   default flags, and no depth of nesting can exhaust the stack.
/// - A document takes memory from the heap in chunks that fit a message; the library's own size is 64 KiB.
///
/// The library's own headers must not come first: two configurations in one program are undefined behaviour that
/// nothing reports. Whoever knows that theirs is this one defines `SETTINGS_HANDLER_RAPIDJSON_IS_CONFIGURED`.

#if defined(RAPIDJSON_MAJOR_VERSION) && !defined(SETTINGS_HANDLER_RAPIDJSON_IS_CONFIGURED)
#error "RapidJSON was included before Utils/Rapidjson.h, which configures it. Include Utils/Rapidjson.h first."
#endif

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <type_traits>

namespace Utils {

/// Reports the failed precondition on standard error and ends the process.
[[noreturn]] inline void failJsonPrecondition(const char* condition, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: JSON precondition failed: %s\n", file, line, condition);
    std::abort();
}

/// In bytes, checked below. The JSON library packs its values on some processors only.
#ifdef __x86_64__
constexpr std::size_t jsonValueSize = 16;
#else
constexpr std::size_t jsonValueSize = 24;
#endif

/// In bytes: room for the sixteen members (name and value) that an object reserves with its first, and for a few short
/// texts.
constexpr std::size_t jsonChunkSize = 16 * 2 * jsonValueSize + 80;

/// Makes what a document owns: an allocator, which is given the size of its chunks.
template <typename Owned>
Owned* makeOwnedByJson() {
    if constexpr (std::is_constructible_v<Owned, std::size_t>) {
        return std::make_unique<Owned>(jsonChunkSize).release();
    } else {
        return std::make_unique<Owned>().release();
    }
}

/// The JSON library asks for `Allocator()`, which is the type of a function here, or, in its newer versions, for
/// `Allocator` and puts the call behind it.
template <typename Wanted>
auto makeForJson() {
    if constexpr (std::is_function_v<Wanted>) {
        return makeOwnedByJson<std::invoke_result_t<Wanted*>>();
    } else {
        return &makeOwnedByJson<Wanted>;
    }
}

}  // namespace Utils

#ifndef RAPIDJSON_HAS_STDSTRING
/// Names and values may be given as `std::string`.
#define RAPIDJSON_HAS_STDSTRING 1
#endif
#ifndef RAPIDJSON_ASSERT
/// What becomes of a failed precondition.
#define RAPIDJSON_ASSERT(condition) \
    ((condition) ? static_cast<void>(0) : ::Utils::failJsonPrecondition(#condition, __FILE__, __LINE__))
#endif

#ifndef RAPIDJSON_NEW
/// How the library makes what a document owns.
#define RAPIDJSON_NEW(made) ::Utils::makeForJson<made>()
#endif

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Utils {

static_assert(sizeof(rapidjson::Value) <= jsonValueSize, "a first member would not fit the chunk of a document");

/// Flags for parsing any text that comes from outside.
constexpr unsigned jsonParseFlags = rapidjson::kParseDefaultFlags | rapidjson::kParseIterativeFlag;

}  // namespace Utils
