#include "SettingsHandlerKit/SettingDescriptions.h"

#include <algorithm>

#include "Wire/Catalogue.h"
#include "Wire/Locales.h"

namespace SettingsHandlerKit {

namespace {

SettingKind kindOf(Wire::SettingKind kind) {
    switch (kind) {
        case Wire::SettingKind::TEXT:
            return SettingKind::TEXT;
        case Wire::SettingKind::SWITCH:
            return SettingKind::SWITCH;
        case Wire::SettingKind::CHOICE:
            return SettingKind::CHOICE;
        case Wire::SettingKind::LOCALES:
            return SettingKind::LOCALES;
        case Wire::SettingKind::TIMEZONE:
            return SettingKind::TIMEZONE;
        case Wire::SettingKind::LIST:
            break;
    }
    return SettingKind::LIST;
}

SettingOwner ownerOf(Wire::SettingOwner owner) {
    switch (owner) {
        case Wire::SettingOwner::STORAGE:
            return SettingOwner::STORAGE;
        case Wire::SettingOwner::VOICE_SDK:
            return SettingOwner::VOICE_SDK;
        case Wire::SettingOwner::DEVICE:
            break;
    }
    return SettingOwner::DEVICE;
}

std::vector<SettingDescription> describeAll() {
    std::vector<SettingDescription> descriptions;
    for (const auto& setting : Wire::catalogue()) {
        SettingDescription description;
        description.key = setting.key;
        description.type = static_cast<SettingsHandler::SettingsNamesType>(setting.number);
        description.kind = kindOf(setting.kind);
        description.values = setting.values;
        description.defaultValue = setting.defaultValue;
        description.owner = ownerOf(setting.owner);
        description.setBy = setting.setByDeviceOnly ? SetBy::DEVICE : SetBy::ANYONE;
        description.privacy = setting.personal ? Privacy::PERSONAL : Privacy::PREFERENCE;
        description.description = setting.description;
        descriptions.push_back(std::move(description));
    }
    return descriptions;
}

}  // namespace

bool SettingDescription::isListed(const std::string& value) const {
    return values.empty() || std::find(values.begin(), values.end(), value) != values.end();
}

const std::vector<SettingDescription>& settingDescriptions() {
    static const std::vector<SettingDescription> descriptions = describeAll();
    return descriptions;
}

const SettingDescription* describeSetting(std::string_view key) {
    const auto& all = settingDescriptions();
    const auto found =
        std::find_if(all.begin(), all.end(), [key](const auto& description) { return description.key == key; });
    return found == all.end() ? nullptr : &*found;
}

std::optional<bool> asSwitch(const std::string& text) {
    if (text == "true") {
        return true;
    }
    return text == "false" ? std::optional<bool>(false) : std::nullopt;
}

std::optional<std::vector<std::string>> asLocales(const std::string& text) {
    return Wire::localesIn(text);
}

}  // namespace SettingsHandlerKit
