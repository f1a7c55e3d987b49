#pragma once

#include <string>

namespace SettingsHandlerFuzz {

/// Returns: whether `text` may be passed to the handler as a SetSettings request, by the host's own check. Also true
/// for texts that the host refuses, except those that would end the process in the handler.
bool mayBeGiven(const std::string& text);

}  // namespace SettingsHandlerFuzz
