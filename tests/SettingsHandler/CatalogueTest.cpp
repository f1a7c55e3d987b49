#include <algorithm>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "SettingsHandler/SettingsNames.h"
#include "Wire/Catalogue.h"

namespace SettingsHandlerTests {

using namespace SettingsHandler;  // NOLINT: this is the test of these names

/// The second opinion: written by hand, and compared with the tables of the library and with the catalogue.
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

std::size_t rowsWithDefault() {
    return static_cast<std::size_t>(
        std::count_if(rows.begin(), rows.end(), [](const Row& row) { return row.defaultValue; }));
}

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
    for (const auto& row : rows) {
        EXPECT_EQ(stringToSettingsNamesTypeMapping.at(row.key), row.type);
        EXPECT_EQ(SettingsNamesTypeToStringMapping.at(row.type), row.key);
        EXPECT_EQ(SettingsNamesTypeToDefaultValuesMapping.count(row.type), row.defaultValue ? 1U : 0U);
    }
    EXPECT_EQ(SettingsNamesTypeToDefaultValuesMapping.size(), rowsWithDefault());
    EXPECT_EQ(stringToSettingsNamesTypeMapping.max_load_factor(), 1.0F);
}

TEST(Catalogue, TheFileHasTheSameRowsInTheSameOrder) {
    const auto& settings = Wire::catalogue();
    ASSERT_EQ(settings.size(), rows.size());
    for (std::size_t place = 0; place < rows.size(); ++place) {
        const auto& row = rows[place];
        SCOPED_TRACE(row.key);
        EXPECT_EQ(settings[place].key, row.key);
        EXPECT_EQ(settings[place].number, row.number);
        EXPECT_EQ(settings[place].defaultValue,
                  row.defaultValue ? std::optional<std::string>(row.defaultValue) : std::nullopt);
    }
}

TEST(Catalogue, TheEnumerationIsThirtyTwoBitsWide) {
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<SettingsNamesType>, std::int32_t>));
    EXPECT_EQ(static_cast<int>(INVALID_SETTING), 0);
}

TEST(Catalogue, UnknownNamesAndNumbersAreNotSettings) {
    for (const auto* name : {"OrliaLocale", "", "locale", "deviceName ", "devicename"}) {
        EXPECT_EQ(settingTypeFromName(name), INVALID_SETTING) << name;
    }
    EXPECT_EQ(settingTypeFromName(std::string("deviceName\0", 11)), INVALID_SETTING);
    for (const int number : {0, rows.back().number + 1, -1}) {
        EXPECT_EQ(settingNameFromType(static_cast<SettingsNamesType>(number)), "");
        EXPECT_EQ(defaultValueForSetting(static_cast<SettingsNamesType>(number)), "CUSTOM_DEFAULT_VALUE");
    }
}

TEST(Catalogue, LookUpsChangeNoTable) {
    settingTypeFromName("unknown");
    settingNameFromType(INVALID_SETTING);
    defaultValueForSetting(TIMEZONE);
    EXPECT_EQ(stringToSettingsNamesTypeMapping.size(), rows.size());
    EXPECT_EQ(SettingsNamesTypeToStringMapping.size(), rows.size());
    EXPECT_EQ(SettingsNamesTypeToDefaultValuesMapping.size(), rowsWithDefault());
}

}  // namespace SettingsHandlerTests
