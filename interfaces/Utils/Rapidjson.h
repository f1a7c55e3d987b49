#pragma once

/// \file
/// The configuration of the JSON library. Every file that uses the library includes this header, so that all of them
/// use the same configuration.
///
/// - Names and values may be given as `std::string`.
/// - A failed precondition (for example, reading the array elements of an object) prints its place and ends the process
///   with `abort`, in every build type: a release build does not continue with undefined behaviour.
/// - Texts are parsed iteratively with `Utils::jsonParseFlags`: the language is that of the library's default flags,
///   and no depth of nesting can exhaust the stack.
/// - A document allocates memory in chunks of the size of a message; the library's own chunk size is 64 KiB.
///
/// Include this header before the library's own headers: two configurations in one program are undefined behaviour that
/// no compiler reports. If your own configuration is this one, define `SETTINGS_HANDLER_RAPIDJSON_IS_CONFIGURED`.

#if defined(RAPIDJSON_MAJOR_VERSION) && !defined(SETTINGS_HANDLER_RAPIDJSON_IS_CONFIGURED)
#error "RapidJSON was included before Utils/Rapidjson.h, which configures it. Include Utils/Rapidjson.h first."
#endif

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <type_traits>

namespace Utils {

/// Prints the failed precondition on standard error and ends the process.
[[noreturn]] inline void failJsonPrecondition(const char* condition, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: JSON precondition failed: %s\n", file, line, condition);
    std::abort();
}

/// Size of a JSON value in bytes, checked below. The JSON library packs its values on some processors only.
#ifdef __x86_64__
constexpr std::size_t jsonValueSize = 16;
#else
constexpr std::size_t jsonValueSize = 24;
#endif

/// Chunk size in bytes: the sixteen members (name and value) that an object reserves with its first one, and a few
/// short texts.
constexpr std::size_t jsonChunkSize = jsonValueSize * 2 * 16 + 80;

/// Makes an allocator that a document owns, with this chunk size if it has one.
template <typename Owned>
Owned* makeOwnedByJson() {
    if constexpr (std::is_constructible_v<Owned, std::size_t>) {
        return std::make_unique<Owned>(jsonChunkSize).release();
    } else {
        return std::make_unique<Owned>().release();
    }
}

/// `RAPIDJSON_NEW` gets `Allocator()` from the JSON library, which is a function type here, or, from its newer
/// versions, `Allocator` followed by a call.
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
/// Ends the process when `condition` is false.
#define RAPIDJSON_ASSERT(condition) \
    ((condition) ? static_cast<void>(0) : ::Utils::failJsonPrecondition(#condition, __FILE__, __LINE__))
#endif

#ifndef RAPIDJSON_NEW
/// Makes an object that a document owns.
#define RAPIDJSON_NEW(made) ::Utils::makeForJson<made>()
#endif

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Utils {

static_assert(sizeof(rapidjson::Value) <= jsonValueSize, "a first member would not fit the chunk of a document");

/// Flags for parsing untrusted texts.
constexpr unsigned jsonParseFlags = rapidjson::kParseDefaultFlags | rapidjson::kParseIterativeFlag;

}  // namespace Utils
