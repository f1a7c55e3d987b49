#pragma once

#include <string>

#include "Utils/Rapidjson.h"

namespace SettingsHandlerTesting {

/// `value` as compact JSON text.
inline std::string jsonText(const rapidjson::Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace SettingsHandlerTesting
