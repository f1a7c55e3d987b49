#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include "SettingsClient/Answer.h"
#include "SettingsClient/Notification.h"

namespace SettingsMqtt {

/// Larger payloads are refused.
constexpr std::size_t maximumPayload = 65536;

/// Why the bridge itself refuses a command; the host's reasons are in `SettingsClient::Reason`.
namespace BridgeReason {

constexpr const char* badPayload = "bad-payload";
constexpr const char* changedSince = "changed-since";
constexpr const char* notOffered = "not-offered";
constexpr const char* oldVersion = "old-version";
constexpr const char* retained = "retained";
constexpr const char* tooLarge = "too-large";
constexpr const char* unavailable = "unavailable";
constexpr const char* unknownKey = "unknown-key";

}  // namespace BridgeReason

/// What a payload asks for.
struct Command {
    std::string value;
    /// Comes back in the outcome; empty: none.
    std::string id;
    /// Of a desired value; 0: none.
    std::int64_t version = 0;
};

class BadPayload : public std::runtime_error {
public:
    BadPayload(std::string why, const std::string& message) : std::runtime_error(message), reasonCode(std::move(why)) {}
    const std::string& reason() const { return reasonCode; }

private:
    std::string reasonCode;
};

/// A bare value, or a JSON object with `value` and perhaps `id`. Errors: `BadPayload`.
Command parseSet(const std::string& payload);
/// A JSON object with `value`, `version` and perhaps `id`. Errors: `BadPayload`.
Command parseDesired(const std::string& payload);

std::string eventPayload(const SettingsClient::Event& event);
std::string outcomePayload(const std::string& key, const Command& command, const SettingsClient::Answer& answer);

/// An answer of the bridge itself.
SettingsClient::Answer refusal(const std::string& reason, const std::string& message);

}  // namespace SettingsMqtt
