#pragma once

#include "Options.h"

namespace SettingsDbus {

/// Serves until SIGINT or SIGTERM. Errors: `BusError` when the bus cannot be reached or does not give the name.
void serve(const Options& options);

}  // namespace SettingsDbus
