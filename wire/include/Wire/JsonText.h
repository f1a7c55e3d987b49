#pragma once

#include <string>

#include "Utils/Rapidjson.h"

namespace Wire {

/// The text of a JSON string, which may hold NUL.
inline std::string textOf(const rapidjson::Value& string) {
    return {string.GetString(), string.GetStringLength()};
}

}  // namespace Wire
