#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "SettingsClient/SocketCandidates.h"
#include "Wire/HostFrame.h"

namespace SettingsClient {

/// Connects to a device socket, sends the command and waits for its reply.
/// Errors: as `Connection` and `throwIfRefusal`.
Wire::HostFrame executeDeviceCommand(const std::vector<SocketCandidate>& candidates, std::chrono::milliseconds timeout,
                                     const std::string& command);

}  // namespace SettingsClient
