#pragma once

#include <string>

#include "Utils/Rapidjson.h"
#include "simulation/Faults.h"

namespace SettingsHost {

// The device commands for faults, see docs/protocol.md.

/// Executes `{"command":"fault","name":…,"enabled":…,"value":…}`, the last one optional.
/// Returns: the reply, `{"ok":true}`, `{"ok":true,"changed":false}` or `{"error":{…}}`.
std::string switchFault(Faults& faults, const rapidjson::Value& request);

/// Returns: `{"faults":[…]}`, all faults with what a person needs to switch them.
std::string faultsFrame(const Faults& faults);

/// The value as a member of a frame is; nothing, if it has none, is null.
rapidjson::Value jsonOf(const FaultValue& value, rapidjson::Document::AllocatorType& memory);
/// The value of a member; none for one that is neither a number nor a string.
FaultValue faultValueOf(const rapidjson::Value& member);

}  // namespace SettingsHost
