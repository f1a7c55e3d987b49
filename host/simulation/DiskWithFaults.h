#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "SettingsHandlerKit/Disk.h"
#include "simulation/Faults.h"

namespace SettingsHost {

/// `disk`, full, slow or failing while those faults are on. `sleep` blocks, as a slow disk does.
std::shared_ptr<SettingsHandlerKit::Disk> makeDiskWithFaults(
    std::shared_ptr<const Faults> faults, std::function<void(std::chrono::milliseconds)> sleep,
    std::shared_ptr<SettingsHandlerKit::Disk> disk = std::make_shared<SettingsHandlerKit::Disk>());

}  // namespace SettingsHost
