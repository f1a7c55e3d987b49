#pragma once

#include "bridge/CommandLine.h"

namespace SettingsDbus {

/// The command-line options.
struct Options : SettingsBridge::Options {
    /// Serve on the session bus in place of the system bus.
    bool session = false;
};

/// Serves until SIGINT or SIGTERM. Errors: `BusError` when it cannot connect to the bus or acquire the name.
void serve(const Options& options);

}  // namespace SettingsDbus
