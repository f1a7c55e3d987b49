#pragma once

#include <string>

/// Names that the handler's sources share: members of payloads and replies, boolean words, keys of the device
/// information and of the metrics. Defined in SettingsNames.cpp, so that they are built before any handler.
namespace SettingsHandler::Constants {

extern const std::string settings;
extern const std::string settingDBId;
extern const std::string from;
extern const std::string to;

extern const std::string trueValue;
extern const std::string falseValue;

/// The value in the device information of a mode that is on.
extern const std::string on;
extern const std::string currentHandsFreeStatus;
extern const std::string currentAlwaysOnVoiceMode;
extern const std::string currentAlwaysOnPTTMode;

/// Means "no default value"; never the value of a setting.
extern const std::string customDefaultValue;

extern const std::string isOrliaSelectedAsVA;

/// The value in the metric of a write that the voice SDK refused.
extern const std::string error;
extern const std::string metricSeparator;
extern const std::string metricGroup;
extern const std::string metricSource;
extern const std::string metricAttribute;

}  // namespace SettingsHandler::Constants
