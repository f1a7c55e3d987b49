#include "Wire/Catalogue.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include "Utils/Rapidjson.h"

namespace Wire {

namespace {

std::string textOf(const rapidjson::Value& setting, const char* member) {
    const auto& value = setting[member];
    return {value.GetString(), value.GetStringLength()};
}

SettingKind kindOf(const std::string& name) {
    static const std::map<std::string, SettingKind> kinds{
        {"text", SettingKind::TEXT},       {"switch", SettingKind::SWITCH},     {"choice", SettingKind::CHOICE},
        {"locales", SettingKind::LOCALES}, {"timezone", SettingKind::TIMEZONE}, {"list", SettingKind::LIST}};
    return kinds.at(name);
}

SettingOwner ownerOf(const std::string& name) {
    static const std::map<std::string, SettingOwner> owners{
        {"storage", SettingOwner::STORAGE}, {"voice SDK", SettingOwner::VOICE_SDK}, {"device", SettingOwner::DEVICE}};
    return owners.at(name);
}

SettingDescription descriptionOf(const rapidjson::Value& setting) {
    SettingDescription made;
    made.key = textOf(setting, "key");
    made.number = setting["number"].GetInt();
    made.kind = kindOf(textOf(setting, "kind"));
    if (made.kind == SettingKind::SWITCH) {
        made.values = {"true", "false"};
    } else if (setting.HasMember("values")) {
        for (const auto& value : setting["values"].GetArray()) {
            made.values.emplace_back(value.GetString(), value.GetStringLength());
        }
    }
    if (setting.HasMember("default")) {
        made.defaultValue = textOf(setting, "default");
    }
    made.owner = ownerOf(textOf(setting, "owner"));
    made.setByDeviceOnly = textOf(setting, "setBy") == "device";
    made.personal = textOf(setting, "privacy") == "personal";
    made.description = textOf(setting, "description");
    return made;
}

std::vector<SettingDescription> readCatalogue() {
    rapidjson::Document document;
    const std::string_view text = catalogueText();
    document.Parse(text.data(), text.size());
    if (document.HasParseError()) {
        throw std::logic_error("the catalogue of settings is not JSON");
    }
    std::vector<SettingDescription> settings;
    for (const auto& setting : document["settings"].GetArray()) {
        settings.push_back(descriptionOf(setting));
    }
    return settings;
}

}  // namespace

const std::vector<SettingDescription>& catalogue() {
    static const std::vector<SettingDescription> settings = readCatalogue();
    return settings;
}

const SettingDescription* findSetting(std::string_view key) {
    const auto& settings = catalogue();
    const auto found =
        std::find_if(settings.begin(), settings.end(), [key](const auto& setting) { return setting.key == key; });
    return found == settings.end() ? nullptr : &*found;
}

}  // namespace Wire
