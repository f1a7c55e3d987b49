#pragma once

#include <cstdio>
#include <cstdlib>

#define RAPIDJSON_HAS_STDSTRING 1
// A broken precondition is a mistake of ours; never run on into undefined behaviour.
#define RAPIDJSON_ASSERT(condition) ((condition) ? static_cast<void>(0) : std::abort())

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace SettingsCtl {

/// Parses without recursion, so that no frame of a broken host exhausts the stack; refuses bytes that are no UTF-8.
constexpr unsigned jsonParseFlags =
    rapidjson::kParseDefaultFlags | rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

}  // namespace SettingsCtl
