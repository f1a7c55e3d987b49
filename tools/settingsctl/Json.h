#pragma once

#include "Utils/Rapidjson.h"

namespace SettingsCtl {

/// Parses without recursion, so that no frame of a broken host exhausts the stack; refuses bytes that are no UTF-8.
constexpr unsigned jsonParseFlags =
    rapidjson::kParseDefaultFlags | rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

}  // namespace SettingsCtl
