#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Wire/MessageType.h"

namespace Wire {

/// Requests, as compact JSON text without a line end. Bytes that are not UTF-8 become U+FFFD.

std::string getSettingsRequest(const std::string& messageId, const std::vector<std::string>& keys);

std::string setSettingsRequest(const std::string& messageId, std::int64_t timestamp, const std::string& key,
                               const std::string& value);

/// A request without a payload.
std::string bareRequest(MessageType type, const std::string& messageId);

}  // namespace Wire
