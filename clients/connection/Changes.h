#pragma once

#include <string>
#include <vector>

#include "SettingsClient/Answer.h"
#include "Wire/MessageType.h"
#include "connection/Session.h"

namespace SettingsClient {

/// Sets one setting. Errors: as `Session::exchange`.
Answer setOne(Session& session, const Assignment& assignment);

/// Sets several settings as batches of as many as a frame takes. Errors: also `NotSupported`.
std::vector<Answer> setInBatches(Session& session, const std::vector<Assignment>& assignments);

/// Sends a request of `type` without payload that does something. Errors: as `Session::exchange`.
Answer request(Session& session, Wire::MessageType type);

}  // namespace SettingsClient
