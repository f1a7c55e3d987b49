#pragma once

namespace SettingsCtl {

/// Parses the command line and runs the verb. Returns: the exit status. Failures are printed to standard error.
int runCommandLine(int argumentCount, const char* const* arguments);

}  // namespace SettingsCtl
