#pragma once

#include <optional>
#include <string>

#include "Wire/Catalogue.h"

namespace SettingsCtl {

/// A switch of the simulated device.
struct DeviceSwitch {
    /// As in `settingsctl device VERB on`.
    std::string verb;
    /// The device command.
    std::string command;
};

/// The switch that sets `setting`, which requests cannot: "do-not-disturb" with the command "doNotDisturb" for
/// "doNotDisturbEnabled". Nothing for every other setting.
std::optional<DeviceSwitch> deviceSwitchOf(const Wire::SettingDescription& setting);

}  // namespace SettingsCtl
