#pragma once

#include <string>

#include "Utils/Rapidjson.h"

namespace SettingsHandlerTesting {

/// Returns: `value` as compact JSON text, as the doubles record it. Threads: any, while no other thread changes
/// `value`.
inline std::string jsonText(const rapidjson::Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace SettingsHandlerTesting
