#pragma once

#include "Wire/HostFrame.h"

namespace SettingsClient {

/// Errors: `RequestRefused` when the frame is the refusal of a request; `ConnectionError` when it is the refusal of one
/// more client; `Wire::MalformedFrame`.
void throwIfRefusal(const Wire::HostFrame& frame);

}  // namespace SettingsClient
