#pragma once

#include <string>

#include "SettingsClient/Answer.h"
#include "SettingsClient/Errors.h"
#include "SettingsClient/Notification.h"
#include "SettingsClient/Setting.h"
#include "Topics.h"

namespace SettingsMqtt {

/// Reason of an answer: the host cannot be reached.
constexpr const char* unavailable = "unavailable";

/// Reads the payload: a bare value, or a JSON object with `value` and perhaps `id`; of a desired value only the latter,
/// with `version`. Errors: `SettingsClient::RequestRefused`.
Command readPayload(Command command);

std::string eventPayload(const SettingsClient::Event& event);
std::string outcomePayload(const Command& command, const SettingsClient::Answer& answer);

/// The message with which Home Assistant shows a setting: a switch, a selection or a text, or what shows one of them
/// that only the device may change. `isOffered` false: removes it there.
Message discoveryOf(const SettingsClient::Setting& setting, const Topics& topics, const std::string& version,
                    bool isOffered = true);

/// An answer of the bridge itself.
SettingsClient::Answer refusal(const std::string& reason, const std::string& message);

}  // namespace SettingsMqtt
