#pragma once

#include <string>

#include "Utils/Rapidjson.h"

/// Parsing of texts that come from outside, and building of messages.
namespace SettingsHandler {

/// Parses `text` up to its first NUL character. Returns: false when it is no JSON; `document` then keeps its root.
inline bool parseJson(const std::string& text, rapidjson::Document& document) {
    return !document.Parse<Utils::jsonParseFlags>(text.c_str()).HasParseError();
}

/// Adds copies of `name` and `value` as the last member of `object`.
inline void addStringMember(rapidjson::Value& object, const std::string& name, const std::string& value,
                            rapidjson::Document::AllocatorType& allocator) {
    object.AddMember(rapidjson::Value(name, allocator), rapidjson::Value(value, allocator), allocator);
}

}  // namespace SettingsHandler
