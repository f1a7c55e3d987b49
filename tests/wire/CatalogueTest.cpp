#include <algorithm>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "Utils/Rapidjson.h"
#include "Wire/Catalogue.h"

namespace Wire {

namespace {

std::vector<std::string> valuesIn(const rapidjson::Value& entry) {
    if (entry["kind"] == "switch") {
        return {"true", "false"};
    }
    std::vector<std::string> values;
    if (entry.HasMember("values")) {
        for (const auto& value : entry["values"].GetArray()) {
            values.emplace_back(value.GetString());
        }
    }
    return values;
}

}  // namespace

TEST(SettingDescriptions, AreInTheOrderOfTheirNumbers) {
    int number = 0;
    std::set<std::string> keys;
    for (const auto& setting : catalogue()) {
        EXPECT_EQ(setting.number, ++number) << setting.key;
        EXPECT_TRUE(keys.insert(setting.key).second) << setting.key << " is there twice";
        EXPECT_EQ(findSetting(setting.key), &setting);
        const bool known =
            std::count(setting.values.begin(), setting.values.end(), setting.defaultValue.value_or("")) != 0;
        EXPECT_TRUE(setting.values.empty() || !setting.defaultValue || known)
            << setting.key << " has a default that it does not offer";
    }
    EXPECT_GT(number, 0);
}

TEST(SettingDescriptions, HaveTheValuesOfTheFile) {
    const std::map<std::string, SettingKind> kinds{
        {"text", SettingKind::TEXT},       {"switch", SettingKind::SWITCH},     {"choice", SettingKind::CHOICE},
        {"locales", SettingKind::LOCALES}, {"timezone", SettingKind::TIMEZONE}, {"list", SettingKind::LIST}};
    const std::map<std::string, SettingOwner> owners{
        {"storage", SettingOwner::STORAGE}, {"voice SDK", SettingOwner::VOICE_SDK}, {"device", SettingOwner::DEVICE}};
    rapidjson::Document file;
    file.Parse(std::string(catalogueText()).c_str());
    ASSERT_TRUE(file.IsObject());
    for (const auto& entry : file["settings"].GetArray()) {
        SCOPED_TRACE(entry["key"].GetString());
        const auto* const setting = findSetting(entry["key"].GetString());
        ASSERT_NE(setting, nullptr);
        EXPECT_EQ(setting->number, entry["number"].GetInt());
        EXPECT_EQ(setting->kind, kinds.at(entry["kind"].GetString()));
        EXPECT_EQ(setting->owner, owners.at(entry["owner"].GetString()));
        EXPECT_EQ(setting->setByDeviceOnly, entry["setBy"] == "device");
        EXPECT_EQ(setting->personal, entry["privacy"] == "personal");
        EXPECT_EQ(setting->description, entry["description"].GetString());
        EXPECT_EQ(setting->defaultValue.has_value(), entry.HasMember("default"));
        EXPECT_EQ(setting->defaultValue.value_or(""), entry.HasMember("default") ? entry["default"].GetString() : "");
        EXPECT_EQ(setting->values, valuesIn(entry));
    }
}

TEST(SettingDescriptions, AreNotFoundForOtherKeys) {
    for (const auto* key : {"", "CaptionsEnabled", "captionsEnabled "}) {
        EXPECT_EQ(findSetting(key), nullptr) << key;
    }
}

}  // namespace Wire
