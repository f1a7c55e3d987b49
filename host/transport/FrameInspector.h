#pragma once

#include <optional>
#include <string>

namespace SettingsHost {

/// Frames to this size are taken, on every door.
constexpr std::size_t maximumFrameSize = 65536;

/// Why the transport itself refuses a frame.
struct Refusal {
    std::string code;
    std::string message;
};

/// The refusal of a frame over `maximumFrameSize`.
Refusal tooLarge();

/// Refuses what is not one JSON object within the nesting limit, all of it valid UTF-8 (escapes resolved) and without a
/// raw NUL: codes "not-json", "not-an-object", "too-deep".
std::optional<Refusal> inspectFrame(const std::string& frame);

/// The request type of an inspected frame: the first member "type" if it is a 32-bit integer.
std::optional<int> requestType(const std::string& frame);

/// The setting that an inspected SetSettings request is about; empty when it does not say.
std::string requestedSetting(const std::string& frame);

}  // namespace SettingsHost
