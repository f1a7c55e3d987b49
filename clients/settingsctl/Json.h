#pragma once

#include "Utils/Rapidjson.h"

namespace SettingsCtl {

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

}  // namespace SettingsCtl
