#pragma once

#include <climits>
#include <string>
#include <vector>

#include "Utils/Rapidjson.h"

static_assert(sizeof(long) * CHAR_BIT >= 64,
              "Utils::RapidjsonUtil reads 64-bit time stamps in `long`: build it for a 64-bit Linux target");

/// Reading members of JSON objects by name and type, and writing JSON as compact text.
///
/// The `tryGet...` operations return true and set `out` when `object` is a JSON object whose first member named `key`
/// has the wanted type. They return false and leave `out` unchanged when the member is missing, has another type, or
/// `object` is not an object. `key` is compared in full, embedded NUL characters included.
///
/// Threads: any, as long as no other thread uses the same document. Locks: none. Nothing is logged.
namespace Utils::RapidjsonUtil {

/// Moves the object member out of `object`, which keeps a null in its place. `out` uses the memory of the document that
/// `object` belongs to.
[[gnu::visibility("default")]] bool tryGetObjectMember(rapidjson::Value& object, const std::string& key,
                                                       rapidjson::Value& out);

/// Reads a signed 64-bit integer. A number with a fraction or an exponent and an integer out of range have another
/// type.
[[gnu::visibility("default")]] bool tryGetInt64Member(const rapidjson::Value& object, const std::string& key,
                                                      long& out);

/// Copies a string, embedded NUL characters included.
[[gnu::visibility("default")]] bool tryGetStringMember(const rapidjson::Value& object, const std::string& key,
                                                       std::string& out);

/// Moves the array member out of `object`, like `tryGetObjectMember`.
[[gnu::visibility("default")]] bool tryGetValueArrayMember(rapidjson::Value& object, const std::string& key,
                                                           rapidjson::Value& out);

/// Returns: `value` as compact JSON text, without white space. Recursive: not for values of unlimited depth.
[[gnu::visibility("default")]] std::string stringify(const rapidjson::Value& value);

/// Returns: `values` as the compact JSON text of an array of strings, for example `["en-US","es-US"]`.
[[gnu::visibility("default")]] std::string stringifyVector(const std::vector<std::string>& values);

}  // namespace Utils::RapidjsonUtil
