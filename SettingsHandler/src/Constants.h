#pragma once

#include <string>

/// Names shared by the handler's sources: members of payloads and replies, boolean words, keys of the device
/// information and of the metrics. Defined in SettingsNames.cpp, so that they exist before any handler does.
namespace SettingsHandler::Constants {

extern const std::string settings;
extern const std::string settingDBId;
extern const std::string from;
extern const std::string to;

extern const std::string trueValue;
extern const std::string falseValue;

/// The word by which the device information says that a mode is switched on.
extern const std::string on;
extern const std::string currentHandsFreeStatus;
extern const std::string currentAlwaysOnVoiceMode;
extern const std::string currentAlwaysOnPTTMode;

/// Stands for "no default value"; never a value of a setting.
extern const std::string customDefaultValue;

extern const std::string isOrliaSelectedAsVA;

/// The value under which a write that the voice SDK refused is counted.
extern const std::string error;
extern const std::string metricSeparator;
extern const std::string metricGroup;
extern const std::string metricSource;
extern const std::string metricAttribute;

}  // namespace SettingsHandler::Constants
