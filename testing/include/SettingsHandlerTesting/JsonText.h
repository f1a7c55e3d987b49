#pragma once

#include <string>

#include "Utils/Rapidjson.h"

namespace SettingsHandlerTesting {

/// `value` as compact JSON text, as the doubles record it. Threads: any, as long as no other changes `value`.
inline std::string jsonText(const rapidjson::Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace SettingsHandlerTesting
