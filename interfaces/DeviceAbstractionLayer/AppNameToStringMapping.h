#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

namespace DeviceAbstractionLayer {

/// Applications of the device that can be launched.
enum class AppName : std::int32_t {
    /// The settings application of the voice assistant.
    VA_SETTINGS_APP = 6,
};

/// The launcher's name for each application. The library reads it once per process, when the assistant's settings are
/// first opened; a later change has no effect. It has no lock: fill it before requests are delivered.
[[gnu::visibility("default")]] extern std::unordered_map<AppName, std::string> AppNameToStringMapping;

}  // namespace DeviceAbstractionLayer
