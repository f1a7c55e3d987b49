#pragma once

#include <cstdint>
#include <string>

#include "model/ReferenceModel.h"

namespace SettingsHandlerFuzz {

/// One of 256 states of the handler's surroundings; 0 is that of a new device which refuses nothing.
Surroundings surroundingsFrom(std::uint8_t bits);

}  // namespace SettingsHandlerFuzz
