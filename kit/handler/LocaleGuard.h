#pragma once

#include <string>

#include "Utils/Rapidjson.h"

namespace SettingsHost {

/// Keeps locale values away from the handler that would end the process inside it: JSON of another kind than an array,
/// and arrays nested deeper than the host takes. A text that is no JSON may pass, because the handler refuses it.
/// Sees exactly what the handler sees: the same parser, the first of duplicate members, the end at a NUL.

/// May `value` be written to the setting `settingDBId`? True for every setting but the assistant locale.
bool isSafeForHandler(const std::string& settingDBId, const std::string& value);

/// May a SetSettings request be delivered? It was parsed as the handler will do it.
bool isRequestSafeForHandler(const rapidjson::Value& request);

}  // namespace SettingsHost
