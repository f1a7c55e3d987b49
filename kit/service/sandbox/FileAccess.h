#pragma once

#include <string>

#include "service/sandbox/Sandbox.h"

namespace SettingsHost {

/// From now on files can only be opened, made, renamed and removed where `folders` and docs/sandbox.md say. What is
/// open stays open. Needs a process that can gain no new privileges. Returns: why that could not be had; empty when it
/// is so.
std::string limitFileAccess(const SandboxFolders& folders);

}  // namespace SettingsHost
