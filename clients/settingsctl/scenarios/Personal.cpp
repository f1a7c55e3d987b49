#include "scenarios/Personal.h"

#include <cctype>

#include "Wire/JsonShape.h"
#include "Wire/JsonText.h"
#include "Wire/ObjectWriter.h"

namespace SettingsCtl {

namespace {

/// JSON with other texts in it.
std::string withoutTexts(const std::string& json) {
    std::string result;
    bool isInside = false;
    for (std::size_t place = 0; place < json.size(); ++place) {
        if (json[place] == '"') {
            result += isInside ? "x\"" : "\"";
            isInside = !isInside;
        } else if (!isInside) {
            result += json[place];
        } else if (json[place] == '\\') {
            ++place;
        }
    }
    return result;
}

std::string withoutWords(std::string text) {
    for (auto& sign : text) {
        const auto code = static_cast<unsigned char>(sign);
        if (std::isalnum(code) != 0 || code >= 0x80) {
            sign = 'x';
        }
    }
    return text;
}

/// The setting that an object tells of: an event, a request, an answer, a command of the device.
const Wire::SettingDescription* settingOf(const rapidjson::Value& object) {
    for (const auto* const name : {"settingDBId", "key"}) {
        const auto key = object.FindMember(name);
        if (key != object.MemberEnd() && key->value.IsString()) {
            return Wire::findSetting(Wire::textOf(key->value));
        }
    }
    return nullptr;
}

bool holdsValue(const std::string& member) {
    return member == "from" || member == "to" || member == "value";
}

}  // namespace

bool PersonalValues::replace(rapidjson::Value& value, const Wire::SettingDescription* setting,
                             rapidjson::Document::AllocatorType& allocator) {
    if (setting == nullptr || !setting->personal || !value.IsString() || value.GetStringLength() == 0 ||
        setting->defaultValue == Wire::textOf(value)) {
        return false;
    }
    const auto replacement =
        replacements.emplace(Wire::textOf(value), "personal-" + std::to_string(replacements.size() + 1)).first;
    value.SetString(replacement->second, allocator);
    return true;
}

bool PersonalValues::replaceIn(rapidjson::Value& value, rapidjson::Document::AllocatorType& allocator) {
    bool isReplaced = false;
    if (value.IsArray()) {
        for (auto& element : value.GetArray()) {
            isReplaced = replaceIn(element, allocator) || isReplaced;
        }
    } else if (value.IsObject()) {
        const auto* const setting = settingOf(value);
        for (auto& member : value.GetObject()) {
            const std::string name = Wire::textOf(member.name);
            const auto* const owner = holdsValue(name) ? setting : Wire::findSetting(name);
            isReplaced = replace(member.value, owner, allocator) || isReplaced;
            isReplaced = replaceIn(member.value, allocator) || isReplaced;
        }
    }
    return isReplaced;
}

std::string PersonalValues::replacedIn(const std::string& text) {
    rapidjson::Document frame;
    if (Wire::inspectFrame(text, frame)) {
        return Wire::shapeOf(text).valid ? withoutTexts(text) : withoutWords(text);
    }
    if (!replaceIn(frame, frame.GetAllocator())) {
        return text;
    }
    rapidjson::StringBuffer written;
    Wire::Utf8Writer<rapidjson::StringBuffer> writer(written);
    frame.Accept(writer);
    return {written.GetString(), written.GetSize()};
}

}  // namespace SettingsCtl
