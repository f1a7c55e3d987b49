#pragma once

#include <string>

namespace SettingsHandlerFuzz {

/// May the handler be given `text` as a SetSettings request? Says what the host would say of a frame that it takes.
/// The handler is given what the host refuses too, except what would end the process inside it.
bool mayBeGiven(const std::string& text);

}  // namespace SettingsHandlerFuzz
