#pragma once

#include <string>

#include "Utils/Rapidjson.h"

namespace SettingsHandlerKit {

/// Rejects locale values that would end the process inside the handler: JSON that is not an array, and arrays nested
/// deeper than `Wire::maximumNesting`. A text that is not JSON passes, because the handler refuses it. The check sees
/// exactly what the handler sees: the same parser, the first of duplicate members, the end at a NUL.

/// May `value` be written to the setting `settingDBId`? True for every setting but the assistant locale.
bool isSafeForHandler(const std::string& settingDBId, const std::string& value);

/// May a SetSettings request be delivered? `request` was parsed as the handler parses it. `payloadKey`: the name of the
/// envelope's member with the payload.
bool isRequestSafeForHandler(const rapidjson::Value& request, const std::string& payloadKey = "payload");

/// The same for the text of a request, as it comes.
bool isRequestTextSafeForHandler(const std::string& text, const std::string& payloadKey);

}  // namespace SettingsHandlerKit
