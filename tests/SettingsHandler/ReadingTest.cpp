#include "HandlerFixture.h"

namespace SettingsHandlerTests {

using Reading = HandlerTest;

Entries readOf(const std::string& key) {
    return {"log 0 SettingsHandler:SettingDBId: " + key};
}

const Entries readStart{"log 0 SettingsHandler:getSettings"};

TEST_F(Reading, SdkSettingsComeFromTheSdk) {
    sdk->captionsEnabled = true;
    sdk->locales = {"en-US", "es-US"};
    EXPECT_EQ(handler->getSettings({"captionsEnabled", "doNotDisturbEnabled", "orliaLocale", "timezone"}),
              (Values{{"captionsEnabled", "true"},
                      {"doNotDisturbEnabled", "false"},
                      {"orliaLocale", R"(["en-US","es-US"])"},
                      {"timezone", "America/Vancouver"}}));
    expectJournal(readStart + readOf("captionsEnabled") + Entries{"sdk.isCaptionsEnabled()"} +
                  readOf("doNotDisturbEnabled") + Entries{"sdk.isDoNotDisturbEnabled()"} + readOf("orliaLocale") +
                  Entries{"sdk.getLocales()"} + readOf("timezone") + Entries{"sdk.getTimezone()"});
}

TEST_F(Reading, EmptySdkValuesAreInTheResult) {
    sdk->timezone = "";
    sdk->locales = {};
    EXPECT_EQ(handler->getSettings({"timezone", "orliaLocale"}), (Values{{"timezone", ""}, {"orliaLocale", "[]"}}));
}

TEST_F(Reading, ModesAreReadFromTheDeviceWithOneCallEach) {
    device->info = {{"currentHandsFreeStatus", "on"}, {"currentAlwaysOnPTTMode", "on"}};
    EXPECT_EQ(
        handler->getSettings({"handsFreeEnabled", "handsFreeAlwaysOnEnabled", "pttAlwaysOnEnabled"}),
        (Values{{"handsFreeEnabled", "true"}, {"handsFreeAlwaysOnEnabled", "false"}, {"pttAlwaysOnEnabled", "true"}}));
    expectJournal(readStart + readOf("handsFreeEnabled") + Entries{"device.getDeviceInfo()"} +
                  readOf("handsFreeAlwaysOnEnabled") + Entries{"device.getDeviceInfo()"} +
                  readOf("pttAlwaysOnEnabled") + Entries{"device.getDeviceInfo()"});
}

TEST_F(Reading, EachModeHasItsOwnDeviceInformation) {
    for (const auto& [key, info] : Values{{"handsFreeEnabled", "currentHandsFreeStatus"},
                                          {"handsFreeAlwaysOnEnabled", "currentAlwaysOnVoiceMode"},
                                          {"pttAlwaysOnEnabled", "currentAlwaysOnPTTMode"}}) {
        device->info = {{info, "on"}};
        EXPECT_EQ(handler->getSettings({key}).at(key), "true") << key;
        for (const auto* word : {"On", "ON", "true", "on ", ""}) {
            device->info = {{info, word}};
            EXPECT_EQ(handler->getSettings({key}).at(key), "false") << key << word;
        }
    }
}

TEST_F(Reading, StoredSettingsComeFromTheStorage) {
    storage.values = {{"deviceName", "Living room"}};
    EXPECT_EQ(handler->getSettings({"deviceName"}), (Values{{"deviceName", "Living room"}}));
    expectJournal(readStart + readOf("deviceName") + Entries{"storage.getValue(deviceName)"});
}

TEST_F(Reading, AnEmptyOrMissingStoredValueGivesTheDefault) {
    for (const bool stored : {true, false}) {
        storage.values.clear();
        if (stored) {
            storage.values["deviceName"] = "";
        }
        EXPECT_EQ(handler->getSettings({"deviceName"}), (Values{{"deviceName", "TV"}}));
        expectJournal(
            readStart + readOf("deviceName") +
            Entries{"storage.getValue(deviceName)", "log 1 SettingsHandler:Default value retrieved for deviceName"});
    }
}

TEST_F(Reading, AKeyWithoutValueAndDefaultIsLeftOut) {
    EXPECT_EQ(handler->getSettings({"tovanEntitlementStatus", "unknown"}), Values{});
    expectJournal(
        readStart + readOf("tovanEntitlementStatus") +
        Entries{"storage.getValue(tovanEntitlementStatus)",
                "log 3 SettingsHandler:Default value was not found for tovanEntitlementStatus"} +
        readOf("unknown") +
        Entries{"storage.getValue(unknown)", "log 3 SettingsHandler:Default value was not found for unknown"});
    EXPECT_EQ(cached("unknown"), "(none)");
}

TEST_F(Reading, AnUnknownKeyWithAValueIsCachedAndAKnownOneIsNot) {
    storage.values = {{"unknown", "x"}, {"deviceName", "Den"}};
    EXPECT_EQ(handler->getSettings({"unknown", "deviceName"}), (Values{{"unknown", "x"}, {"deviceName", "Den"}}));
    EXPECT_EQ(cached("unknown"), "x");
    EXPECT_EQ(cached("deviceName"), "(none)");
}

TEST_F(Reading, DuplicatesAreReadAgainAndTheLastOneCounts) {
    journal.at("sdk.getTimezone()", [&] { journal.at("sdk.getTimezone()", [&] { sdk->timezone = "second"; }); });
    EXPECT_EQ(handler->getSettings({"timezone", "timezone"}), (Values{{"timezone", "second"}}));
    expectJournal(readStart + readOf("timezone") + Entries{"sdk.getTimezone()"} + readOf("timezone") +
                  Entries{"sdk.getTimezone()"});
}

/// Changes the caller's list of keys while the handler reads.
class ListChangingStorage : public SDKWrapper::StorageManagerInterface {
public:
    explicit ListChangingStorage(std::vector<std::string>& keysInUse) : keys(keysInUse) {}
    void getValue(const std::string& key, std::string& value) override {
        asked.push_back(key);
        value = "value";
        keys.clear();
        keys.shrink_to_fit();
    }
    bool setValue(const std::string& /*key*/, const std::string& /*value*/) override { return true; }
    bool removeValue(const std::string& /*key*/) override { return true; }
    bool clearStorage() override { return true; }

    std::vector<std::string>& keys;
    std::vector<std::string> asked;
};

TEST_F(Reading, ReadsTheGivenKeysEvenWhenACollaboratorChangesTheList) {
    std::vector<std::string> keys{"deviceName", "a key that is kept on the heap", "captionsStyles"};
    ListChangingStorage changing(keys);
    OpenHandler reader(transport, changing, metrics, sdk, app, device);
    EXPECT_EQ(
        reader.getSettings(keys),
        (Values{{"deviceName", "value"}, {"a key that is kept on the heap", "value"}, {"captionsStyles", "value"}}));
    EXPECT_EQ(changing.asked,
              (std::vector<std::string>{"deviceName", "a key that is kept on the heap", "captionsStyles"}));
}

TEST_F(Reading, AnEmptyListReadsAllInTheOrderOfTheTable) {
    EXPECT_EQ(handler->getSettings({}), initialValues());
    expectJournal(readOfAll());
}

std::vector<SettingsHandler::SettingsNamesType> notInTheCatalogue() {
    const auto end = static_cast<SettingsHandler::SettingsNamesType>(Wire::catalogue().size() + 1);
    return {static_cast<SettingsHandler::SettingsNamesType>(-1), SettingsHandler::INVALID_SETTING, end};
}

TEST_F(Reading, GetSdkSettingReadsOnlyTheSettingsOfTheSdk) {
    using namespace SettingsHandler;  // NOLINT: the enumerators
    sdk->doNotDisturbEnabled = true;
    EXPECT_EQ(handler->getSDKSetting(CAPTIONS_ENABLED), "false");
    EXPECT_EQ(handler->getSDKSetting(DO_NOT_DISTURB_ENABLED), "true");
    EXPECT_EQ(handler->getSDKSetting(ORLIA_LOCALE), R"(["en-US"])");
    EXPECT_EQ(handler->getSDKSetting(TIMEZONE), "America/Vancouver");
    expectJournal(
        (Entries{"sdk.isCaptionsEnabled()", "sdk.isDoNotDisturbEnabled()", "sdk.getLocales()", "sdk.getTimezone()"}));
    for (const auto& setting : Wire::catalogue()) {
        if (setting.owner != Wire::SettingOwner::VOICE_SDK) {
            EXPECT_EQ(handler->getSDKSetting(settingTypeFromName(setting.key)), "") << setting.key;
        }
    }
    for (const auto type : notInTheCatalogue()) {
        EXPECT_EQ(handler->getSDKSetting(type), "") << type;
    }
    expectJournal(Entries{});
}

TEST_F(Reading, TheSettingsOfTheSdkAreThoseOfTheCatalogue) {
    for (const auto& setting : Wire::catalogue()) {
        EXPECT_EQ(OpenHandler::isSDKSetting(SettingsHandler::settingTypeFromName(setting.key)),
                  setting.owner == Wire::SettingOwner::VOICE_SDK)
            << setting.key;
    }
    for (const auto type : notInTheCatalogue()) {
        EXPECT_FALSE(OpenHandler::isSDKSetting(type)) << type;
    }
}

TEST_F(Reading, TheCurrentMapRefreshesFiveEntriesInOrder) {
    device->info = {{"currentHandsFreeStatus", "on"}};
    EXPECT_EQ(handler->getCurrentSettingsMap(), (Values{{"doNotDisturbEnabled", "false"},
                                                        {"captionsEnabled", "false"},
                                                        {"orliaLocale", R"(["en-US"])"},
                                                        {"timezone", "America/Vancouver"},
                                                        {"handsFreeEnabled", "true"}}));
    expectJournal(
        (Entries{"log 1 SettingsHandler:getCurrentSettingsMap", "sdk.isDoNotDisturbEnabled()",
                 "sdk.isCaptionsEnabled()", "sdk.getLocales()", "sdk.getTimezone()", "device.getDeviceInfo()"}));
}

TEST_F(Reading, TheCurrentMapReturnsOtherEntriesAsLastKnown) {
    cache("handsFreeAlwaysOnEnabled", "stale");
    cache("pttAlwaysOnEnabled", "stale");
    cache("deviceName", "Den");
    cache("handsFreeEnabled", "stale");
    device->info = {{"currentAlwaysOnVoiceMode", "on"}, {"currentAlwaysOnPTTMode", "on"}};
    storage.values = {{"deviceName", "Attic"}};
    const auto map = handler->getCurrentSettingsMap();
    EXPECT_EQ(map.at("handsFreeAlwaysOnEnabled"), "stale");
    EXPECT_EQ(map.at("pttAlwaysOnEnabled"), "stale");
    EXPECT_EQ(map.at("deviceName"), "Den");
    EXPECT_EQ(map.at("handsFreeEnabled"), "false");
    EXPECT_EQ(map.size(), 8U);
}

}  // namespace SettingsHandlerTests
