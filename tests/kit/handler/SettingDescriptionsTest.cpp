#include "SettingsHandler/SettingsNames.h"
#include "SettingsHandlerKit/SettingDescriptions.h"
#include "Wire/Catalogue.h"

namespace SettingsHandlerKit {

TEST(SettingDescriptions, SayWhatTheCatalogueSays) {
    ASSERT_EQ(settingDescriptions().size(), Wire::catalogue().size());
    for (const auto& setting : Wire::catalogue()) {
        const SettingDescription* description = describeSetting(setting.key);
        ASSERT_NE(description, nullptr) << setting.key;
        EXPECT_EQ(description->key, setting.key);
        EXPECT_EQ(description->type, SettingsHandler::settingTypeFromName(setting.key));
        EXPECT_EQ(static_cast<int>(description->kind), static_cast<int>(setting.kind));
        EXPECT_EQ(static_cast<int>(description->owner), static_cast<int>(setting.owner));
        EXPECT_EQ(description->values, setting.values);
        EXPECT_EQ(description->defaultValue, setting.defaultValue);
        EXPECT_EQ(description->setBy == SetBy::DEVICE, setting.setByDeviceOnly);
        EXPECT_EQ(description->privacy == Privacy::PERSONAL, setting.personal);
        EXPECT_EQ(description->description, setting.description);
    }
    EXPECT_EQ(describeSetting("devicename"), nullptr);
    EXPECT_EQ(describeSetting(""), nullptr);
}

TEST(SettingDescriptions, KnowTheListedValues) {
    EXPECT_TRUE(describeSetting("captionsFontSize")->isListed("FONT_SMALL"));
    EXPECT_FALSE(describeSetting("captionsFontSize")->isListed("font_small"));
    EXPECT_TRUE(describeSetting("handsFreeEnabled")->isListed("false"));
    EXPECT_FALSE(describeSetting("handsFreeEnabled")->isListed("TRUE"));
    EXPECT_TRUE(describeSetting("deviceName")->isListed("anything"));
    EXPECT_TRUE(describeSetting("timezone")->isListed("")) << "nothing is listed";
}

TEST(SettingDescriptions, ASwitchIsOneOfTwoWords) {
    EXPECT_EQ(asSwitch("true"), true);
    EXPECT_EQ(asSwitch("false"), false);
    for (const auto* text : {"", "TRUE", "on", "1", " true"}) {
        EXPECT_EQ(asSwitch(text), std::nullopt) << text;
    }
}

TEST(SettingDescriptions, LocalesAreThoseThatTheHandlerSets) {
    using Locales = std::vector<std::string>;
    using namespace std::string_literals;
    EXPECT_EQ(asLocales(R"(["en-US"])"), Locales{"en-US"});
    EXPECT_EQ(asLocales(R"( [1, "en-US", "", null, ["x"], "fr-FR"] )"), (Locales{"en-US", "fr-FR"}));
    EXPECT_EQ(asLocales("[\"en-US\"]\0[]"s), Locales{"en-US"});
    const std::string tooDeep = std::string(32, '[') + std::string(32, ']');
    for (const auto& text :
         {""s, "en-US"s, "\"en-US\""s, "{}"s, "[]"s, R"(["",1])"s, R"(["en-US")"s, "[\"en-US\"," + tooDeep + "]"}) {
        EXPECT_EQ(asLocales(text), std::nullopt) << text;
    }
}

}  // namespace SettingsHandlerKit
