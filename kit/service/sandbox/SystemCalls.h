#pragma once

#include <string>
#include <vector>

namespace SettingsHost {

/// System calls that the host makes while it serves. docs/sandbox.md says for what.
const std::vector<std::string>& allowedCalls();

/// System calls that no fault of ours makes but only somebody who took the host over: they end it at once.
const std::vector<std::string>& fatalCalls();

/// From now on every call that is neither allowed nor fatal fails with EPERM. Among the allowed ones these fail too:
/// memory that can be executed, sockets other than Unix ones, signals to other processes, requests to devices.
/// Returns: why that could not be had; empty when it is so.
std::string limitSystemCalls();

}  // namespace SettingsHost
