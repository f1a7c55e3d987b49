#include "HandlerFixture.h"

namespace SettingsHandlerTests {

using SettingsWriting = HandlerTest;

// Locales

TEST_F(SettingsWriting, PassesLocalesToTheSdkAndReportsTheChange) {
    EXPECT_TRUE(handler->setSetting("orliaLocale", R"(["fr-FR","en-US"])"));
    expectJournal(writeOf("orliaLocale") + Entries{"sdk.getLocales()", "sdk.setLocales(fr-FR|en-US)"} +
                  changed("orliaLocale", R"([\"en-US\"])", R"([\"fr-FR\",\"en-US\"])", R"(["fr-FR","en-US"])") +
                  Entries{R"(log 1 SettingsHandler:OrliaLocale changed from '["en-US"]' to '["fr-FR","en-US"]')",
                          "metricsCache.setOrliaLocale(fr-FR)"});
}

TEST_F(SettingsWriting, RefusesALocaleTextThatIsNotJson) {
    for (const auto* text : {"", "  ", R"(["en-US")", "en-US", R"(["en-US"],)", R"(["en-US"] x)", "[\"en-US\",]",
                             "['en-US']", "// c\n[\"en-US\"]", "[NaN]"}) {
        EXPECT_FALSE(handler->setSetting("orliaLocale", text)) << text;
        expectJournal(writeOf("orliaLocale") +
                      Entries{"log 3 SettingsHandler:orliaLocale is not in the proper format"});
    }
}

TEST_F(SettingsWriting, RefusesAnArrayWithoutALocale) {
    for (const auto* text : {"[]", R"(["",""])", "[1,true]", R"([null,{},["en-US"]])", " [ ] "}) {
        EXPECT_FALSE(handler->setSetting("orliaLocale", text)) << text;
        expectJournal(writeOf("orliaLocale") +
                      Entries{"log 3 SettingsHandler:orliaLocale is empty or not in the correct format"});
    }
}

TEST_F(SettingsWriting, SkipsElementsThatAreNotLocalesAndReportsTheUnchangedText) {
    const auto observer = std::make_shared<SettingsHandlerTesting::FakeLocaleObserver>(journal);
    handler->addOrliaLocaleObserver(observer);
    const std::string text = R"(["en-US", 5, "", "fr-FR", ["x"], null, "fr-FR"])";
    EXPECT_TRUE(handler->setSetting("orliaLocale", text));
    expectJournal(
        writeOf("orliaLocale") + Entries{"sdk.getLocales()", "sdk.setLocales(en-US|fr-FR|fr-FR)"} +
        changed("orliaLocale", R"([\"en-US\"])", R"([\"en-US\", 5, \"\", \"fr-FR\", [\"x\"], null, \"fr-FR\"])", text) +
        Entries{R"(log 1 SettingsHandler:OrliaLocale changed from '["en-US"]' to ')" + text + "'",
                "metricsCache.setOrliaLocale(en-US)", "observer.orliaLocale(en-US)"});
}

TEST_F(SettingsWriting, TheSameLocaleTextChangesNothing) {
    sdk->locales = {"en-US", "es-US"};
    const std::string text = R"(["en-US","es-US"])";
    EXPECT_FALSE(handler->setSetting("orliaLocale", text));
    expectJournal(
        writeOf("orliaLocale") +
        Entries{"sdk.getLocales()",
                "log 0 SettingsHandler:orliaLocale was not changed, oldValue is the same as newValue: oldValue(" +
                    text + "), newValue(" + text + ")"});
}

TEST_F(SettingsWriting, TheSameLocalesWithOtherBlanksAreAChange) {
    EXPECT_TRUE(handler->setSetting("orliaLocale", R"( ["en-US"])"));
    const auto entries = journal.take();
    EXPECT_EQ(Entries(entries.begin() + 2, entries.begin() + 4),
              (Entries{"sdk.getLocales()", "sdk.setLocales(en-US)"}));
}

TEST_F(SettingsWriting, TheLocaleTextIsWhatIsCached) {
    handler->setSetting("orliaLocale", R"( ["fr-FR"])");
    sdk->locales = {"de-DE"};
    EXPECT_TRUE(handler->setSetting("orliaLocale", R"( ["fr-FR"])")) << "was compared with the cache, not with the SDK";
}

using SettingsWritingDeathTest = HandlerTest;

TEST_F(SettingsWritingDeathTest, ALocaleThatIsJsonButNoArrayEndsTheProcess) {
    for (const auto* text : {"{}", R"("en-US")", "5", "null", "true", R"({"a":["en-US"]})"}) {
        EXPECT_DEATH(handler->setSetting("orliaLocale", text), "IsArray\\(\\)") << text;
    }
}

// Time zone, captions, do-not-disturb

TEST_F(SettingsWriting, PassesTheTimezoneToTheSdk) {
    EXPECT_TRUE(handler->setSetting("timezone", "Europe/Paris"));
    expectJournal(writeOf("timezone") + Entries{"sdk.getTimezone()", "sdk.setTimezone(Europe/Paris)"} +
                  changed("timezone", "America/Vancouver", "Europe/Paris") +
                  Entries{"log 1 SettingsHandler:OrliaTimezone changed from 'America/Vancouver' to 'Europe/Paris'"});
}

TEST_F(SettingsWriting, AcceptsAnyTextAsATimezone) {
    for (const auto* text : {"", "nowhere", " America/Vancouver"}) {
        sdk->timezone = "America/Vancouver";
        EXPECT_TRUE(handler->setSetting("timezone", text));
        EXPECT_EQ(sdk->timezone, text);
    }
}

TEST_F(SettingsWriting, TheSameTimezoneChangesNothing) {
    EXPECT_FALSE(handler->setSetting("timezone", "America/Vancouver"));
    expectJournal(writeOf("timezone") +
                  Entries{"sdk.getTimezone()",
                          "log 0 SettingsHandler:orliaTimezone was not changed, oldValue is the same as newValue: "
                          "oldValue(America/Vancouver), newValue(America/Vancouver)"});
}

TEST_F(SettingsWriting, CaptionsAndDoNotDisturbCannotBeWritten) {
    for (const std::string key : {"captionsEnabled", "doNotDisturbEnabled"}) {
        for (const auto* value : {"true", "false", ""}) {
            EXPECT_FALSE(handler->setSetting(key, value));
            expectJournal(writeOf(key) + Entries{"log 3 SettingsHandler:Invalid SDK SettingDBId: " + key});
        }
    }
}

// Entitlement status

TEST_F(SettingsWriting, StoresTheEntitlementStatusThenNotifiesObserversThenSendsTheEvent) {
    const auto observer = std::make_shared<SettingsHandlerTesting::FakeEntitlementObserver>(journal);
    handler->addEntitlementStatusObserver(observer);
    EXPECT_TRUE(handler->setSetting("tovanEntitlementStatus", "active"));
    expectJournal(writeOf("tovanEntitlementStatus") +
                  Entries{"storage.setValue(tovanEntitlementStatus, active)",
                          "log 1 SettingsHandler:tovanEntitlementStatus changed from '' to 'active'",
                          "log 1 SettingsHandler:onEntitlementStatusChanged: active",
                          "observer.entitlementStatus(active)"} +
                  changed("tovanEntitlementStatus", "", "active"));
    EXPECT_EQ(cached("tovanEntitlementStatus"), "active");
}

TEST_F(SettingsWriting, TheSameEntitlementStatusChangesNothing) {
    cache("tovanEntitlementStatus", "active");
    EXPECT_FALSE(handler->setSetting("tovanEntitlementStatus", "active"));
    expectJournal(
        writeOf("tovanEntitlementStatus") +
        Entries{"log 1 SettingsHandler:tovanEntitlementStatus was not updated. New value: 'active' was not saved."});
}

TEST_F(SettingsWriting, AFailedWriteOfTheEntitlementStatusIsSilentAndTriedAgain) {
    storage.refusesWrites = true;
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(handler->setSetting("tovanEntitlementStatus", "active"));
        expectJournal(writeOf("tovanEntitlementStatus") + Entries{"storage.setValue(tovanEntitlementStatus, active)"});
    }
    EXPECT_EQ(cached("tovanEntitlementStatus"), "(none)");
}

// Hands-free, always-on modes, friendly name

TEST_F(SettingsWriting, OnlyTheExactWordTrueSwitchesHandsFreeOn) {
    cache("handsFreeEnabled", "false");
    EXPECT_TRUE(handler->setSetting("handsFreeEnabled", "true"));
    expectJournal(writeOf("handsFreeEnabled") +
                  Entries{"sdk.setHandsFreeEnabled(true)",
                          "log 1 SettingsHandler:handsFreeEnabled changed from 'false' to 'true'"} +
                  changed("handsFreeEnabled", "false", "true"));
    for (const auto* value : {"TRUE", "1", "", "true "}) {
        const std::string before = value == std::string("TRUE") ? "true" : "x";
        cache("handsFreeEnabled", before);
        EXPECT_TRUE(handler->setSetting("handsFreeEnabled", value));
        expectJournal(
            writeOf("handsFreeEnabled") +
            Entries{"sdk.setHandsFreeEnabled(false)",
                    "log 1 SettingsHandler:handsFreeEnabled changed from '" + before + "' to '" + value + "'"} +
            changed("handsFreeEnabled", before, value));
    }
}

TEST_F(SettingsWriting, TheRawTextOfAHandsFreeChangeIsCached) {
    EXPECT_TRUE(handler->setSetting("handsFreeEnabled", "TRUE"));
    journal.take();
    EXPECT_FALSE(handler->setSetting("handsFreeEnabled", "TRUE"));
    expectJournal(writeOf("handsFreeEnabled") +
                  Entries{"log 1 SettingsHandler:handsFreeEnabled was not updated: new value: 'TRUE' is the same"});
}

TEST_F(SettingsWriting, PassesTheAlwaysOnModesToTheSdk) {
    for (const std::string key : {"handsFreeAlwaysOnEnabled", "pttAlwaysOnEnabled"}) {
        EXPECT_TRUE(handler->setSetting(key, "true"));
        expectJournal(writeOf(key) +
                      Entries{"sdk.applySetting(" + key + ", true)",
                              "log 1 SettingsHandler:" + key + " changed from '' to 'true'"} +
                      changed(key, "", "true"));
        EXPECT_FALSE(handler->setSetting(key, "true"));
        expectJournal(writeOf(key) +
                      Entries{"log 1 SettingsHandler:" + key + " was not updated: new value: 'true' is the same"});
    }
    EXPECT_TRUE(storage.values.empty());
}

TEST_F(SettingsWriting, ARefusalOfTheSdkIsCountedAndTheChangeIsReported) {
    sdk->refusesSettings = true;
    for (const std::string key : {"handsFreeAlwaysOnEnabled", "pttAlwaysOnEnabled"}) {
        EXPECT_TRUE(handler->setSetting(key, "true"));
        expectJournal(writeOf(key) +
                      Entries{"sdk.applySetting(" + key + ", true)",
                              "metrics.recordCounter(" + key + "_error, 0, 1, 1)",
                              "metrics.recordEvent(app_events, AUTO, interaction_name=" + key + "_error)",
                              "log 1 SettingsHandler:" + key + " changed from '' to 'true'"} +
                      changed(key, "", "true"));
        EXPECT_EQ(cached(key), "true");
    }
}

TEST_F(SettingsWriting, NotifiesFriendlyNameObserversBeforeTheEvent) {
    handler->addFriendlyNameObserver(std::make_shared<SettingsHandlerTesting::FakeFriendlyNameObserver>(journal));
    EXPECT_TRUE(handler->setSetting("friendlyName", "Den"));
    expectJournal(writeOf("friendlyName") +
                  Entries{"sdk.applySetting(friendlyName, Den)", "observer.friendlyName(Den)",
                          "log 1 SettingsHandler:friendlyName changed from '' to 'Den'"} +
                  changed("friendlyName", "", "Den"));
}

TEST_F(SettingsWriting, NotifiesFriendlyNameObserversAlsoWhenTheSdkRefused) {
    sdk->refusesSettings = true;
    handler->addFriendlyNameObserver(std::make_shared<SettingsHandlerTesting::FakeFriendlyNameObserver>(journal));
    EXPECT_TRUE(handler->setSetting("friendlyName", "Den"));
    expectJournal(writeOf("friendlyName") +
                  Entries{"sdk.applySetting(friendlyName, Den)", "metrics.recordCounter(friendlyName_error, 0, 1, 1)",
                          "metrics.recordEvent(app_events, AUTO, interaction_name=friendlyName_error)",
                          "observer.friendlyName(Den)", "log 1 SettingsHandler:friendlyName changed from '' to 'Den'"} +
                  changed("friendlyName", "", "Den"));
}

// Stored settings

TEST_F(SettingsWriting, StoresAllOtherSettingsAndUnknownKeys) {
    Entries keys{"unknown", "DeviceName", ""};
    for (const auto& setting : Wire::catalogue()) {
        const bool hasItsOwnRoute = setting.key == "friendlyName" || setting.key == "tovanEntitlementStatus";
        if (setting.owner == Wire::SettingOwner::STORAGE && !hasItsOwnRoute) {
            keys.push_back(setting.key);
        }
    }
    ASSERT_GE(keys.size(), 9U);
    for (const auto& key : keys) {
        EXPECT_TRUE(handler->setSetting(key, "value")) << key;
        expectJournal(
            writeOf(key) +
            Entries{"storage.setValue(" + key + ", value)", "log 1 SettingsHandler:" + key + " new value: 'value'"} +
            changed(key, "", "value"));
        EXPECT_EQ(storage.values.at(key), "value");
    }
}

TEST_F(SettingsWriting, ReturnsFalseAndWritesNothingWhenTheValueIsUnchanged) {
    EXPECT_TRUE(handler->setSetting("deviceName", "Den"));
    journal.take();
    EXPECT_FALSE(handler->setSetting("deviceName", "Den"));
    expectJournal(writeOf("deviceName"));
}

TEST_F(SettingsWriting, TheEmptyValueOfAnUncachedKeyIsUnchanged) {
    EXPECT_FALSE(handler->setSetting("unknown", ""));
    expectJournal(writeOf("unknown"));
    EXPECT_EQ(cached("unknown"), "(none)") << "the look-up made an entry";
}

TEST_F(SettingsWriting, AnOldValueCanBeSetAgain) {
    EXPECT_TRUE(handler->setSetting("deviceName", "Den"));
    EXPECT_TRUE(handler->setSetting("deviceName", ""));
    journal.take();
    EXPECT_TRUE(handler->setSetting("deviceName", "Den"));
    expectJournal(writeOf("deviceName") +
                  Entries{"storage.setValue(deviceName, Den)", "log 1 SettingsHandler:deviceName new value: 'Den'"} +
                  changed("deviceName", "", "Den"));
}

TEST_F(SettingsWriting, AFailedWriteIsLoggedAndTriedAgain) {
    cache("deviceName", "Den");
    storage.refusesWrites = true;
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(handler->setSetting("deviceName", "Attic"));
        expectJournal(writeOf("deviceName") +
                      Entries{"storage.setValue(deviceName, Attic)",
                              "log 3 SettingsHandler:deviceName new value: 'Attic' value was not written properly"});
    }
    EXPECT_EQ(cached("deviceName"), "Den");
}

}  // namespace SettingsHandlerTests
