#pragma once

#include "bridge/CommandLine.h"

namespace SettingsDbus {

/// The command-line options.
struct Options : SettingsBridge::Options {
    /// Serve on the session bus in place of the system bus.
    bool session = false;
};

/// Errors: `SettingsBridge::CommandLineEnd`.
Options parseOptions(int argumentCount, const char* const* arguments);

}  // namespace SettingsDbus
