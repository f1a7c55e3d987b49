#include <fstream>
#include <iterator>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "SettingsHandler/SettingsNames.h"
#include "Utils/Rapidjson.h"

namespace SettingsHandlerTests {

using namespace SettingsHandler;  // NOLINT: the catalogue is what is looked at here

struct Row {
    SettingsNamesType type;
    int number;
    const char* key;
    const char* defaultValue;
};

const std::vector<Row> rows{
    {DEVICE_NAME, 1, "deviceName", "TV"},
    {COMPANION_DEVICE, 2, "companionDevice", R"(["",""])"},
    {ORLIA_LOCALE, 3, "orliaLocale", nullptr},
    {CAPTIONS_ENABLED, 4, "captionsEnabled", nullptr},
    {CAPTIONS_FONT_SIZE, 5, "captionsFontSize", "FONT_MEDIUM"},
    {CAPTIONS_STYLES, 6, "captionsStyles", "STYLE_WHITE_ON_BLACK"},
    {DO_NOT_DISTURB_ENABLED, 7, "doNotDisturbEnabled", nullptr},
    {HANDS_FREE_ENABLED, 8, "handsFreeEnabled", "false"},
    {HANDS_FREE_ALWAYS_ON_ENABLED, 9, "handsFreeAlwaysOnEnabled", "false"},
    {HANDS_FREE_ALWAYS_ON_DISCOVERED, 10, "handsFreeAlwaysOnDiscovered", "false"},
    {PTT_ALWAYS_ON_ENABLED, 11, "pttAlwaysOnEnabled", "false"},
    {PTT_ALWAYS_ON_DISCOVERED, 12, "pttAlwaysOnDiscovered", "false"},
    {FRIENDLY_NAME, 13, "friendlyName", "TV"},
    {TOVAN_ENTITLEMENT_STATUS, 14, "tovanEntitlementStatus", nullptr},
    {TIMEZONE, 15, "timezone", nullptr},
};

TEST(Catalogue, NumbersKeysAndDefaultsAreTheFixedOnes) {
    for (const auto& row : rows) {
        SCOPED_TRACE(row.key);
        EXPECT_EQ(static_cast<int>(row.type), row.number);
        EXPECT_EQ(settingTypeFromName(row.key), row.type);
        EXPECT_EQ(settingNameFromType(row.type), row.key);
        EXPECT_EQ(defaultValueForSetting(row.type), row.defaultValue ? row.defaultValue : "CUSTOM_DEFAULT_VALUE");
    }
}

TEST(Catalogue, TablesHoldTheRowsAndNothingElse) {
    EXPECT_EQ(stringToSettingsNamesTypeMapping.size(), rows.size());
    EXPECT_EQ(SettingsNamesTypeToStringMapping.size(), rows.size());
    EXPECT_EQ(SettingsNamesTypeToDefaultValuesMapping.size(), 10U);
    for (const auto& row : rows) {
        EXPECT_EQ(stringToSettingsNamesTypeMapping.at(row.key), row.type);
        EXPECT_EQ(SettingsNamesTypeToStringMapping.at(row.type), row.key);
        EXPECT_EQ(SettingsNamesTypeToDefaultValuesMapping.count(row.type), row.defaultValue ? 1U : 0U);
    }
    EXPECT_EQ(stringToSettingsNamesTypeMapping.max_load_factor(), 1.0F);
}

TEST(Catalogue, TheFileHasTheSameRowsInTheSameOrder) {
    std::ifstream file(CATALOGUE_FILE);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    rapidjson::Document catalogue;
    ASSERT_FALSE(catalogue.Parse(text.c_str()).HasParseError());
    const auto& settings = catalogue["settings"];
    ASSERT_EQ(settings.Size(), rows.size());
    for (rapidjson::SizeType place = 0; place < settings.Size(); ++place) {
        const auto& setting = settings[place];
        const auto& row = rows[place];
        SCOPED_TRACE(row.key);
        EXPECT_STREQ(setting["key"].GetString(), row.key);
        EXPECT_EQ(setting["number"].GetInt(), row.number);
        EXPECT_STREQ(setting.HasMember("default") ? setting["default"].GetString() : nullptr, row.defaultValue);
    }
}

TEST(Catalogue, TheEnumerationIsThirtyTwoBitsWide) {
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<SettingsNamesType>, std::int32_t>));
    EXPECT_EQ(static_cast<int>(INVALID_SETTING), 0);
}

TEST(Catalogue, UnknownNamesAndNumbersAreNoSettings) {
    for (const auto* name : {"OrliaLocale", "", "locale", "deviceName ", "devicename"}) {
        EXPECT_EQ(settingTypeFromName(name), INVALID_SETTING) << name;
    }
    EXPECT_EQ(settingTypeFromName(std::string("deviceName\0", 11)), INVALID_SETTING);
    for (const int number : {0, 16, -1}) {
        EXPECT_EQ(settingNameFromType(static_cast<SettingsNamesType>(number)), "");
        EXPECT_EQ(defaultValueForSetting(static_cast<SettingsNamesType>(number)), "CUSTOM_DEFAULT_VALUE");
    }
}

TEST(Catalogue, LookUpsChangeNoTable) {
    settingTypeFromName("unknown");
    settingNameFromType(INVALID_SETTING);
    defaultValueForSetting(TIMEZONE);
    EXPECT_EQ(stringToSettingsNamesTypeMapping.size(), 15U);
    EXPECT_EQ(SettingsNamesTypeToStringMapping.size(), 15U);
    EXPECT_EQ(SettingsNamesTypeToDefaultValuesMapping.size(), 10U);
}

}  // namespace SettingsHandlerTests
