#pragma once

#include <string>

#include "VessaLogger/Log.h"

namespace Benchmarks::Floor {

inline VessaLogger::Log& logger = VessaLogger::Log::instance();

/// Names that are looked up or copied, made once like the handler's own.
namespace Names {
inline const std::string settingDBId = "settingDBId";
inline const std::string from = "from";
inline const std::string to = "to";
inline const std::string settings = "settings";
inline const std::string group = "app_events";
inline const std::string source = "AUTO";
inline const std::string attribute = "interaction_name";
}  // namespace Names

}  // namespace Benchmarks::Floor
