#pragma once

#include <string>
#include <vector>

#include "Message.h"
#include "Wire/Catalogue.h"

namespace SettingsDbus {

/// The name of the property for a setting: "deviceName" becomes "DeviceName".
std::string propertyOf(const std::string& key);

/// The type of the property: switches are booleans, lists of locales and other lists arrays of strings, all others
/// strings.
const char* signatureOf(Wire::SettingKind kind);

/// Appends the value `text` of a setting as its property has it. A text that is not of the kind of the setting, and one
/// that is missing, becomes false, an empty array or an empty string.
/// Returns: the result of sd-bus.
int append(sd_bus_message* message, Wire::SettingKind kind, const std::string& text);

/// Reads the variant that is next in `message`. Returns: the value as the host has it.
/// Errors: `CallError` when the variant is of another type.
std::string readVariant(sd_bus_message* message, const Wire::SettingDescription& setting);

/// Reads the array of strings that is next in `message`. Errors: `BusError`.
std::vector<std::string> readStrings(sd_bus_message* message);

}  // namespace SettingsDbus
