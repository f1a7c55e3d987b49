#pragma once

#include "SettingsClient/Errors.h"
#include "Wire/HostFrame.h"

namespace SettingsClient {

/// Errors: `RequestRefused` when the frame is the refusal of a request; `ConnectionError` when it is the refusal of one
/// more client; `Wire::MalformedFrame`.
void throwIfRefusal(const Wire::HostFrame& frame);

/// The error for a frame with this fault: what sent it is no host.
UnexpectedResponse notAHost(const Wire::MalformedFrame& fault);

}  // namespace SettingsClient
