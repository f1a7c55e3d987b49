#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "SettingsHandlerKit/Storage.h"
#include "simulation/Faults.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/SimulatedSdkBridge.h"

namespace SettingsHost {

/// A state that a host starts with: the values of settings, wherever they live, and faults. docs/laboratory.md has its
/// file.
struct World {
    /// By key, as on the wire.
    std::map<std::string, std::string> values;
    /// What older software left in the storage, by key. The handler migrates it at its start.
    std::map<std::string, std::string> legacy;
    std::map<Fault, FaultValue> faults;
};

/// A world that cannot be; `what()` begins with the path of the wrong member, such as "/sdk/timezone: ".
class WorldError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads and checks the text of a world's file. Errors: `WorldError`.
World worldOf(const std::string& text);

/// The same for a file. Errors: `WorldError`, whose text begins with the file's name.
World worldIn(const std::string& file);

/// Stores the values of `world`, all or none. `state` is that of the simulation, which reads it afterwards.
/// Errors: `std::runtime_error` when the storage or the state has values already, or they cannot be stored.
void storeWorld(const World& world, SettingsHandlerKit::Storage& storage, SettingsHandlerKit::StateStore& state);

/// The world as it is. Values of storage settings that have their default because none is stored are not in it.
World currentWorld(SDKWrapper::StorageManagerInterface& storage, SimulatedSdkBridge& sdk, const SimulatedDevice& device,
                   const Faults& faults);

/// Returns: `{"world":{…},"leftOut":[…]}`: the object that a world's file has, and the keys of the personal values that
/// it lacks unless `withValues`.
std::string worldFrame(const World& world, bool withValues);

}  // namespace SettingsHost
