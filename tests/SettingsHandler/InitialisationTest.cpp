#include "HandlerFixture.h"

namespace SettingsHandlerTests {

class Initialisation : public HandlerTest {
protected:
    /// A handler whose getSettings returns what the test sets.
    class Reporting : public OpenHandler {
    public:
        using OpenHandler::OpenHandler;
        Values report;
        std::vector<std::vector<std::string>> asked;
        std::map<std::string, std::string> getSettings(const std::vector<std::string>& names) override {
            asked.push_back(names);
            return report;
        }
    };

    std::shared_ptr<Reporting> reporting(const Values& report) {
        auto made = make<Reporting>();
        made->report = report;
        journal.take();
        return made;
    }
};

TEST_F(Initialisation, PassesTheModesOfTheDeviceToTheSdk) {
    device->info = {{"currentHandsFreeStatus", "on"}, {"currentAlwaysOnVoiceMode", "on"}};
    handler->initializeSettings();
    expectJournal(readOfAll() + Entries{"log 1 Setting initial hands free status value %s:true",
                                        "sdk.setHandsFreeEnabled(true)",
                                        "log 1 Setting initial hands free always on status value %s:true",
                                        "sdk.applySetting(handsFreeAlwaysOnEnabled, true)",
                                        // Intended: the value is the hands-free one.
                                        "log 1 Setting initial PTT always on status value %s:true",
                                        "sdk.applySetting(pttAlwaysOnEnabled, false)"});
}

TEST_F(Initialisation, ReadsAllSettingsThroughTheInterfaceAndPassesValuesUnchanged) {
    const auto made = reporting({{"handsFreeEnabled", "TRUE"},
                                 {"handsFreeAlwaysOnEnabled", "maybe"},
                                 {"pttAlwaysOnEnabled", "yes"},
                                 {"deviceName", "Den"}});
    made->initializeSettings();
    EXPECT_EQ(made->asked, (std::vector<std::vector<std::string>>{{}}));
    expectJournal((Entries{"log 1 Setting initial hands free status value %s:TRUE", "sdk.setHandsFreeEnabled(false)",
                           "log 1 Setting initial hands free always on status value %s:maybe",
                           "sdk.applySetting(handsFreeAlwaysOnEnabled, maybe)",
                           "log 1 Setting initial PTT always on status value %s:maybe",
                           "sdk.applySetting(pttAlwaysOnEnabled, yes)"}));
}

TEST_F(Initialisation, AbsentKeysBecomeEmptyEntries) {
    const auto made = reporting({{"deviceName", "Den"}});
    made->initializeSettings();
    expectJournal((Entries{
        "log 1 Setting initial hands free status value %s:", "sdk.setHandsFreeEnabled(false)",
        "log 1 Setting initial hands free always on status value %s:", "sdk.applySetting(handsFreeAlwaysOnEnabled, )",
        "log 1 Setting initial PTT always on status value %s:", "sdk.applySetting(pttAlwaysOnEnabled, )"}));
    auto map = made->getCurrentSettingsMap();
    EXPECT_EQ(map.at("handsFreeAlwaysOnEnabled"), "");
    EXPECT_EQ(map.at("pttAlwaysOnEnabled"), "");
    EXPECT_EQ(map.at("deviceName"), "Den");
}

TEST_F(Initialisation, ReplacesTheWholeCacheEachTime) {
    const auto made = reporting({{"deviceName", "Den"}, {"gone", "x"}});
    made->initializeSettings();
    made->report = {{"deviceName", "Attic"}};
    made->initializeSettings();
    const auto map = made->getCurrentSettingsMap();
    EXPECT_EQ(map.at("deviceName"), "Attic");
    EXPECT_EQ(map.count("gone"), 0U);
}

TEST_F(Initialisation, ARefusalOfTheSdkIsIgnored) {
    sdk->refusesSettings = true;
    handler->initializeSettings();
    expectJournal(readOfAll() + Entries{"log 1 Setting initial hands free status value %s:false",
                                        "sdk.setHandsFreeEnabled(false)",
                                        "log 1 Setting initial hands free always on status value %s:false",
                                        "sdk.applySetting(handsFreeAlwaysOnEnabled, false)",
                                        "log 1 Setting initial PTT always on status value %s:false",
                                        "sdk.applySetting(pttAlwaysOnEnabled, false)"});
    EXPECT_EQ(cached("handsFreeAlwaysOnEnabled"), "false");
}

TEST_F(Initialisation, WritesNothingToTheStorage) {
    storage.values = {{"deviceName", "Den"}};
    handler->initializeSettings();
    EXPECT_EQ(storage.values, (Values{{"deviceName", "Den"}}));
    EXPECT_EQ(cached("deviceName"), "Den");
}

}  // namespace SettingsHandlerTests
