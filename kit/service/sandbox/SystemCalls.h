#pragma once

#include <string>
#include <vector>

namespace SettingsHandlerKit {

/// System calls that the program makes while it serves; docs/sandbox.md gives the reasons.
const std::vector<std::string>& allowedCalls();

/// System calls that only an attacker would make: they end the process.
const std::vector<std::string>& fatalCalls();

/// Makes every call that is neither allowed nor fatal fail with EPERM; of the allowed ones also executable memory,
/// sockets other than Unix sockets, signals to other processes, and most ioctl requests.
/// Returns: the reason of a failure; empty on success.
std::string limitSystemCalls();

}  // namespace SettingsHandlerKit
