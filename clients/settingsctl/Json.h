#pragma once

#include "Utils/Rapidjson.h"

namespace SettingsCtl {

/// Parses without recursion, so that no nesting exhausts the stack, and rejects invalid UTF-8.
constexpr unsigned jsonParseFlags =
    rapidjson::kParseDefaultFlags | rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

}  // namespace SettingsCtl
