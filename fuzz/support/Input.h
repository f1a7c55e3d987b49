#pragma once

#include <cstdint>
#include <string>

#include "model/ReferenceModel.h"

namespace SettingsHandlerFuzz {

/// One of 256 states of what the handler stands among, knobs included; 0 is a fresh and willing one.
Surroundings surroundingsFrom(std::uint8_t bits);

}  // namespace SettingsHandlerFuzz
