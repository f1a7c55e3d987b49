#pragma once

#include <climits>
#include <string>
#include <vector>

#include "Utils/Rapidjson.h"

static_assert(sizeof(long) * CHAR_BIT >= 64,
              "Utils::RapidjsonUtil reads 64-bit time stamps in `long`: build it for a 64-bit Linux target");

/// Reading members of JSON objects by name and type, and rendering JSON as compact text.
///
/// The `tryGet...` operations answer true and fill `out` when `object` is a JSON object whose first member named
/// `key` has the wanted type. They answer false and leave `out` as it was when the member is missing, has another
/// type, or `object` is not an object at all. `key` is compared whole, embedded NUL characters included.
///
/// Threads: any, as long as no other thread uses the same document. Nothing here locks or logs.
namespace Utils::RapidjsonUtil {

/// Moves the object member out of `object` (which keeps a null in its place). `out` stays in the memory of the
/// document that `object` belongs to.
[[gnu::visibility("default")]] bool tryGetObjectMember(rapidjson::Value& object, const std::string& key,
                                                       rapidjson::Value& out);

/// Reads a signed 64-bit integer. Numbers written with a fraction or an exponent, and integers out of range, are
/// of another type.
[[gnu::visibility("default")]] bool tryGetInt64Member(const rapidjson::Value& object, const std::string& key,
                                                      long& out);

/// Copies a string, embedded NUL characters included.
[[gnu::visibility("default")]] bool tryGetStringMember(const rapidjson::Value& object, const std::string& key,
                                                       std::string& out);

/// Moves the array member out of `object`, like `tryGetObjectMember`.
[[gnu::visibility("default")]] bool tryGetValueArrayMember(rapidjson::Value& object, const std::string& key,
                                                           rapidjson::Value& out);

/// Renders `value` as compact JSON text, without any blank between its parts. Works down the nesting by recursion:
/// not for values of unlimited depth.
[[gnu::visibility("default")]] std::string stringify(const rapidjson::Value& value);

/// Renders `values` as the compact JSON text of an array of strings, for example `["en-US","es-US"]`.
[[gnu::visibility("default")]] std::string stringifyVector(const std::vector<std::string>& values);

}  // namespace Utils::RapidjsonUtil
