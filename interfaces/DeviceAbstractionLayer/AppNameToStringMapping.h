#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

namespace DeviceAbstractionLayer {

/// Applications of the device that others may launch.
enum class AppName : std::int32_t {
    /// The settings application of the voice assistant.
    VA_SETTINGS_APP = 6,
};

/// The name by which the launcher knows each application. The library reads it once, when the assistant's settings are
/// opened for the first time; a later change is not seen. Nothing locks it: fill it before requests are let in.
[[gnu::visibility("default")]] extern std::unordered_map<AppName, std::string> AppNameToStringMapping;

}  // namespace DeviceAbstractionLayer
