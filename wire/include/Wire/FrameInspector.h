#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Utils/Rapidjson.h"

namespace Wire {

/// The largest frame that listeners accept.
constexpr std::size_t maximumFrameSize = 65536;

/// Why the transport itself refuses a frame.
struct Refusal {
    std::string code;
    std::string message;
};

/// The refusal of a frame over `maximumFrameSize`.
Refusal tooLarge();

/// Refuses what is not one JSON object within the nesting limit, all of it valid UTF-8 (escapes resolved) and without a
/// raw NUL: codes `notJson`, `notAnObject`, `tooDeep`.
std::optional<Refusal> inspectFrame(const std::string& frame);

/// The same; `request` becomes what an accepted frame holds, so that it is parsed once.
std::optional<Refusal> inspectFrame(const std::string& frame, rapidjson::Document& request);

/// The type of a request, which is an object: the first member "type" if it is a 32-bit integer.
std::optional<int> requestType(const rapidjson::Value& request);

/// What a SetSettings request asks for, as far as it says: absent is what is missing or has the wrong type.
struct RequestedChange {
    std::optional<std::string_view> settingDBId;
    std::optional<std::string_view> to;
};

/// The texts are those of `request`.
RequestedChange requestedChange(const rapidjson::Value& request);

/// May a client have this name: 1 to 64 characters, no control character among them?
bool isClientName(std::string_view name);

}  // namespace Wire
