#pragma once

#include <string>

#include "SettingsHandlerKit/Sandbox.h"

namespace SettingsHandlerKit {

/// Restricts opening, creating, renaming and removing files to `folders` and the files in docs/sandbox.md. Open
/// descriptors stay usable. Needs no_new_privs. Returns: the reason of a failure; empty on success.
std::string limitFileAccess(const SandboxFolders& folders);

}  // namespace SettingsHandlerKit
