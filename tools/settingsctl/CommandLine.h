#pragma once

namespace SettingsCtl {

/// Reads the command line and runs the verb. Returns: the exit status. Failures are written to standard error.
int runCommandLine(int argumentCount, const char* const* arguments);

}  // namespace SettingsCtl
