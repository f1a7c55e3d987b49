#pragma once

#include <string>
#include <vector>

namespace SettingsHandlerKit {

/// The folders that the program needs after its start.
struct SandboxFolders {
    /// Folders in which it creates, changes, renames and removes files.
    std::vector<std::string> changed;
    /// Folders in which it only removes files.
    std::vector<std::string> cleared;
    /// Folders whose files it only reads.
    std::vector<std::string> read;
};

/// Drops permanently what the program does not need: capabilities, new privileges, files outside `folders` (except
/// those that docs/sandbox.md lists), and system calls outside SystemCalls.h. An attacker who takes over the program is
/// bound by the same limits. What the kernel does not support is logged at level 2 and skipped. Call it before other
/// threads start.
void enterSandbox(const SandboxFolders& folders);

}  // namespace SettingsHandlerKit
