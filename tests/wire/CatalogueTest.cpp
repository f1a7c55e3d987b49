#include <set>

#include <gtest/gtest.h>

#include "Wire/Catalogue.h"

namespace Wire {

TEST(SettingDescriptions, AreInTheOrderOfTheirNumbers) {
    int number = 0;
    std::set<std::string> keys;
    for (const auto& setting : catalogue()) {
        EXPECT_EQ(setting.number, ++number) << setting.key;
        EXPECT_TRUE(keys.insert(setting.key).second) << setting.key << " is there twice";
        EXPECT_EQ(findSetting(setting.key), &setting);
    }
    EXPECT_EQ(number, 15);
}

TEST(SettingDescriptions, HaveTheValuesOfTheFile) {
    const auto* size = findSetting("captionsFontSize");
    ASSERT_NE(size, nullptr);
    EXPECT_EQ(size->number, 5);
    EXPECT_EQ(size->kind, SettingKind::CHOICE);
    EXPECT_EQ(size->values, (std::vector<std::string>{"FONT_SMALL", "FONT_MEDIUM", "FONT_LARGE", "FONT_EXTRA_LARGE"}));
    EXPECT_EQ(size->defaultValue, "FONT_MEDIUM");
    EXPECT_EQ(size->owner, SettingOwner::STORAGE);
    EXPECT_FALSE(size->setByDeviceOnly);
    EXPECT_FALSE(size->personal);
    EXPECT_EQ(size->description, "Text size of captions.");

    const auto* captions = findSetting("captionsEnabled");
    ASSERT_NE(captions, nullptr);
    EXPECT_EQ(captions->kind, SettingKind::SWITCH);
    EXPECT_EQ(captions->values, (std::vector<std::string>{"true", "false"}));
    EXPECT_EQ(captions->defaultValue, std::nullopt);
    EXPECT_EQ(captions->owner, SettingOwner::VOICE_SDK);
    EXPECT_TRUE(captions->setByDeviceOnly);

    const auto* companion = findSetting("companionDevice");
    ASSERT_NE(companion, nullptr);
    EXPECT_EQ(companion->defaultValue, R"(["",""])");
    EXPECT_TRUE(companion->personal);
}

TEST(SettingDescriptions, AreNotFoundForOtherKeys) {
    for (const auto* key : {"", "CaptionsEnabled", "captionsEnabled "}) {
        EXPECT_EQ(findSetting(key), nullptr) << key;
    }
}

}  // namespace Wire
