#pragma once

#include <string>
#include <vector>

namespace SettingsHost {

/// What the host still needs of the file system once its listeners are open.
struct SandboxFolders {
    /// Where it makes, changes, renames and removes files.
    std::vector<std::string> changed;
    /// Where it only removes files.
    std::vector<std::string> cleared;
};

/// Gives up for good what the host does not need: capabilities, new privileges, files outside `folders` (but for what
/// docs/sandbox.md lists), and system calls outside SystemCalls.h. Whoever takes the host over through a frame can do
/// no more than the host. What the kernel does not offer is logged at level 2 and left out. One thread only, before
/// others are made.
void enterSandbox(const SandboxFolders& folders);

}  // namespace SettingsHost
