#pragma once

#include <string>

#include "Broker.h"
#include "SettingsClient/Setting.h"
#include "Topics.h"

namespace SettingsMqtt {

/// The message with which Home Assistant shows a setting: a switch, a selection or a text, or what shows one of them
/// that only the device may change.
Message discoveryOf(const SettingsClient::Setting& setting, const std::string& id, const Topics& topics,
                    const std::string& version);
/// Removes the setting there.
Message noDiscoveryOf(const SettingsClient::Setting& setting, const std::string& id);

}  // namespace SettingsMqtt
