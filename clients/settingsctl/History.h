#pragma once

#include <string>

#include "SettingsClient/Notification.h"

namespace SettingsCtl {

/// Where a change came from, for people: "socket", or "kitchen-remote, socket" when the client has a name.
std::string originOf(const SettingsClient::Event& event);

/// The host keeps its history in memory alone.
constexpr const char* noChangeKnown = "the host has no record of a change";

}  // namespace SettingsCtl
