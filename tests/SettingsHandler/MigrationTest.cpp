#include "HandlerFixture.h"

namespace SettingsHandlerTests {

using Migration = HandlerTest;

const Entries start{"log 1 SettingsHandler:migrateExistingDeviceSettings", "storage.getValue(orliaLocale)"};
const Entries localeMissing{"log 1 SettingsHandler:No value retrieved for orliaLocale", "storage.getValue(timezone)"};
const Entries timezoneMissing{"log 1 SettingsHandler:No value retrieved for timezone"};

TEST_F(Migration, WithoutStoredValuesChangesNothing) {
    handler->migrateExistingDeviceSettings();
    expectJournal(start + localeMissing + timezoneMissing);
}

TEST_F(Migration, SetsAStoredLocaleAndRemovesIt) {
    storage.values = {{"orliaLocale", R"(["fr-FR"])"}};
    handler->migrateExistingDeviceSettings();
    expectJournal(start + writeOf("orliaLocale") + Entries{"sdk.getLocales()", "sdk.setLocales(fr-FR)"} +
                  changed("orliaLocale", R"([\"en-US\"])", R"([\"fr-FR\"])", R"(["fr-FR"])") +
                  Entries{R"(log 1 SettingsHandler:OrliaLocale changed from '["en-US"]' to '["fr-FR"]')",
                          "metricsCache.setOrliaLocale(fr-FR)",
                          "log 1 SettingsHandler:orliaLocale migrated successfully", "storage.removeValue(orliaLocale)",
                          "storage.getValue(timezone)"} +
                  timezoneMissing);
    EXPECT_TRUE(storage.values.empty());
}

TEST_F(Migration, SetsAStoredTimezoneAndRemovesIt) {
    storage.values = {{"timezone", "Europe/Paris"}};
    handler->migrateExistingDeviceSettings();
    expectJournal(start + localeMissing + writeOf("timezone") +
                  Entries{"sdk.getTimezone()", "sdk.setTimezone(Europe/Paris)"} +
                  changed("timezone", "America/Vancouver", "Europe/Paris") +
                  Entries{"log 1 SettingsHandler:OrliaTimezone changed from 'America/Vancouver' to 'Europe/Paris'",
                          "log 1 SettingsHandler:timezone migrated successfully", "storage.removeValue(timezone)"});
    EXPECT_TRUE(storage.values.empty());
}

TEST_F(Migration, KeepsARefusedLocaleAndContinues) {
    storage.values = {{"orliaLocale", "[]"}, {"timezone", "Europe/Paris"}};
    handler->migrateExistingDeviceSettings();
    const auto entries = journal.take();
    const Entries refused =
        start + writeOf("orliaLocale") +
        Entries{"log 3 SettingsHandler:orliaLocale is empty or not in the correct format",
                "log 3 SettingsHandler:orliaLocale was not migrated successfully", "storage.getValue(timezone)"};
    EXPECT_EQ(Entries(entries.begin(), entries.begin() + static_cast<long>(refused.size())), refused);
    EXPECT_EQ(storage.values, (Values{{"orliaLocale", "[]"}}));
}

TEST_F(Migration, KeepsAValueThatTheSdkAlreadyHasAndTriesAgainEachTime) {
    storage.values = {{"timezone", "America/Vancouver"}};
    const Entries refused =
        start + localeMissing + writeOf("timezone") +
        Entries{"sdk.getTimezone()",
                "log 0 SettingsHandler:orliaTimezone was not changed, oldValue is the same as newValue: "
                "oldValue(America/Vancouver), newValue(America/Vancouver)",
                "log 3 SettingsHandler:timezone was not migrated successfully"};
    for (int round = 0; round < 2; ++round) {
        handler->migrateExistingDeviceSettings();
        expectJournal(refused);
        EXPECT_EQ(storage.values.count("timezone"), 1U);
    }
}

TEST_F(Migration, IgnoresTheResultOfTheRemoval) {
    storage.values = {{"timezone", "Europe/Paris"}};
    storage.refusesRemoval = true;
    handler->migrateExistingDeviceSettings();
    EXPECT_EQ(journal.take().back(), "storage.removeValue(timezone)");
}

TEST_F(Migration, WritesThroughTheInterface) {
    struct Derived : OpenHandler {
        using OpenHandler::OpenHandler;
        Entries written;
        bool setSetting(const std::string& name, const std::string& value) override {
            written.push_back(name + "=" + value);
            return true;
        }
    };
    const auto derived = make<Derived>();
    storage.values = {{"orliaLocale", "old"}, {"timezone", "zone"}};
    derived->migrateExistingDeviceSettings();
    EXPECT_EQ(derived->written, (Entries{"orliaLocale=old", "timezone=zone"}));
    EXPECT_TRUE(storage.values.empty());
}

TEST_F(Migration, AStorageThatLeavesItsOutputUntouchedWouldPassTheLocaleOnAsTimezone) {
    // The handler uses one string for both reads, which is why the storage must set it.
    struct Careless : SettingsHandlerTesting::FakeStorage {
        using FakeStorage::FakeStorage;
        void getValue(const std::string& key, std::string& value) override {
            if (key == "orliaLocale") {
                value = R"(["fr-FR"])";
            }
        }
    } careless(journal);
    OpenHandler other(transport, careless, metrics, sdk, app, device);
    other.migrateExistingDeviceSettings();
    EXPECT_EQ(sdk->timezone, R"(["fr-FR"])");
}

}  // namespace SettingsHandlerTests
