#pragma once

#include <map>
#include <string>

#include "Wire/Catalogue.h"
#include "Wire/FrameInspector.h"

namespace SettingsCtl {

/// Replaces the values of personal settings in frames: the same value by the same text each time, so that frames can
/// still be compared. Defaults and empty values say nothing of a person and stay.
class PersonalValues {
public:
    /// `text`, to the last character where it has no such value. Of what is not a frame all words are replaced.
    std::string replacedIn(const std::string& text);

private:
    bool replaceIn(rapidjson::Value& value, rapidjson::Document::AllocatorType& allocator);
    bool replace(rapidjson::Value& value, const Wire::SettingDescription* setting,
                 rapidjson::Document::AllocatorType& allocator);

    std::map<std::string, std::string> replacements;
};

}  // namespace SettingsCtl
