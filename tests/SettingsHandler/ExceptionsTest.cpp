#include "HandlerFixture.h"

namespace SettingsHandlerTests {

/// The handler catches nothing: an exception leaves the operation, the mutex is free, and the cache has the changes
/// that were made before.
class Exceptions : public HandlerTest {
protected:
    struct Thrown : std::runtime_error {
        Thrown() : std::runtime_error("thrown by a test") {}
    };

    /// Throws at the next `entry` during `operation`, and expects that the mutex is free afterwards.
    void expectPasses(const std::string& entry, const std::function<void()>& operation) {
        SCOPED_TRACE(entry);
        journal.at(entry, [] { throw Thrown(); });
        EXPECT_THROW(operation(), Thrown);
        EXPECT_TRUE(journal.allActionsRun()) << "it did not happen";
        auto probe = std::async(std::launch::async, [this] {
            handler->removeFriendlyNameObserver(
                std::make_shared<SettingsHandlerTesting::FakeFriendlyNameObserver>(journal));
        });
        ASSERT_EQ(probe.wait_for(std::chrono::seconds(20)), std::future_status::ready) << "the mutex is still held";
        journal.take();
    }
};

TEST_F(Exceptions, LeaveInitialisation) {
    for (const auto* entry : {"log 0 SettingsHandler:getSettings", "storage.getValue", "sdk.getLocales",
                              "device.getDeviceInfo", "log 1 Setting initial hands free status",
                              "sdk.setHandsFreeEnabled", "sdk.applySetting(handsFree", "sdk.applySetting(ptt"}) {
        expectPasses(entry, [&] { handler->initializeSettings(); });
    }
}

TEST_F(Exceptions, BeforeTheCacheIsFilledItStaysAsItWas) {
    cache("deviceName", "Den");
    expectPasses("sdk.getLocales", [&] { handler->initializeSettings(); });
    EXPECT_EQ(cached("deviceName"), "Den");
    expectPasses("sdk.setHandsFreeEnabled", [&] { handler->initializeSettings(); });
    EXPECT_EQ(cached("deviceName"), "TV");
}

TEST_F(Exceptions, LeaveTheCurrentMap) {
    for (const auto* entry : {"log 1 SettingsHandler:getCurrentSettingsMap", "sdk.isDoNotDisturbEnabled",
                              "sdk.getTimezone", "device.getDeviceInfo"}) {
        expectPasses(entry, [&] { handler->getCurrentSettingsMap(); });
    }
}

TEST_F(Exceptions, LeaveStoredWrites) {
    for (const auto* entry :
         {"log 0 SettingsHandler:setSetting", "storage.setValue", "log 1 SettingsHandler:deviceName"}) {
        expectPasses(entry, [&] { handler->setSetting("deviceName", "Den"); });
        EXPECT_EQ(cached("deviceName"), "(none)") << entry;
    }
    // From here on the cache has the new value already.
    int round = 0;
    for (const auto* entry : {"transport.sendMessage", "metrics.recordCounter", "metrics.recordEvent"}) {
        const std::string value = "Den " + std::to_string(++round);
        expectPasses(entry, [&] { handler->setSetting("deviceName", value); });
        EXPECT_EQ(cached("deviceName"), value) << entry;
    }
}

TEST_F(Exceptions, LeaveLocaleWrites) {
    const auto observer = std::make_shared<SettingsHandlerTesting::FakeLocaleObserver>(journal);
    handler->addOrliaLocaleObserver(observer);
    int round = 0;
    for (const auto* entry :
         {"sdk.getLocales", "sdk.setLocales", "transport.sendMessage", "metrics.recordEvent",
          "log 1 SettingsHandler:OrliaLocale", "metricsCache.setOrliaLocale", "observer.orliaLocale"}) {
        expectPasses(entry, [&] { handler->setSetting("orliaLocale", "[\"" + std::to_string(++round) + "\"]"); });
    }
}

TEST_F(Exceptions, LeaveTimezoneWrites) {
    int round = 0;
    for (const auto* entry : {"sdk.getTimezone", "sdk.setTimezone", "transport.sendMessage"}) {
        expectPasses(entry, [&] { handler->setSetting("timezone", std::to_string(++round)); });
    }
}

TEST_F(Exceptions, LeaveAppliedWritesBeforeOrAfterTheCache) {
    handler->addFriendlyNameObserver(std::make_shared<SettingsHandlerTesting::FakeFriendlyNameObserver>(journal));
    for (const auto* entry : {"sdk.applySetting", "observer.friendlyName", "log 1 SettingsHandler:friendlyName"}) {
        expectPasses(entry, [&] { handler->setSetting("friendlyName", "Den"); });
        EXPECT_EQ(cached("friendlyName"), "(none)") << entry;
    }
    expectPasses("sdk.setHandsFreeEnabled", [&] { handler->setSetting("handsFreeEnabled", "true"); });
    sdk->refusesSettings = true;
    expectPasses("metrics.recordCounter(pttAlwaysOnEnabled_error",
                 [&] { handler->setSetting("pttAlwaysOnEnabled", "true"); });
}

TEST_F(Exceptions, LeaveEntitlementWritesAndTheStoredValueIsAheadOfTheCache) {
    handler->addEntitlementStatusObserver(std::make_shared<SettingsHandlerTesting::FakeEntitlementObserver>(journal));
    for (const auto* entry :
         {"storage.setValue", "log 1 SettingsHandler:onEntitlementStatusChanged", "observer.entitlementStatus"}) {
        expectPasses(entry, [&] { handler->setSetting("tovanEntitlementStatus", "active"); });
        EXPECT_EQ(cached("tovanEntitlementStatus"), "(none)") << entry;
    }
    EXPECT_EQ(storage.values.at("tovanEntitlementStatus"), "active");
}

TEST_F(Exceptions, LeaveMigrationAndTheOldValueStays) {
    for (const auto* entry : {"log 1 SettingsHandler:migrateExistingDeviceSettings", "storage.getValue",
                              "sdk.setTimezone", "storage.removeValue"}) {
        storage.values["timezone"] = std::string("zone of ") + entry;
        expectPasses(entry, [&] { handler->migrateExistingDeviceSettings(); });
        EXPECT_EQ(storage.values.count("timezone"), 1U) << entry;
    }
}

TEST_F(Exceptions, LeaveRequests) {
    const std::string get = R"({"messageId":"m","payload":{"settings":["deviceName"]}})";
    for (const auto* entry :
         {"log 1 SettingsHandler:Handling GetSettings", "storage.getValue", "transport.sendResponse"}) {
        expectPasses(entry, [&] { deliver(7, get); });
    }
    expectPasses("transport.sendResponse", [&] { deliver(18, R"({"messageId":"m"})"); });
    expectPasses("log 3 SettingsHandler:Message ID", [&] { deliver(18, "{}"); });
    expectPasses("app.launchApp", [&] { deliver(19, ""); });
    for (const auto* entry :
         {"sdk.applySetting", "sdk.setHandsFreeEnabled", "storage.clearStorage", "sdk.getLocales"}) {
        expectPasses(entry, [&] { deliver(22, ""); });
    }
}

TEST_F(Exceptions, LeaveALogOutBeforeTheCacheIsReplaced) {
    cache("left over", "x");
    expectPasses("storage.clearStorage", [&] { handler->handleLogOutRequest(); });
    EXPECT_EQ(cached("left over"), "x");
}

TEST_F(Exceptions, LeaveNotifications) {
    expectPasses("sdk.getLocales", [&] { handler->notifyLocaleChange(std::string("fr-FR")); });
    expectPasses("sdk.setLocales", [&] { handler->notifyLocaleChange(std::vector<std::string>{"fr-FR"}); });
    expectPasses("sdk.setTimezone", [&] { handler->notifyTimezoneChange("zone"); });
    expectPasses("storage.setValue", [&] { handler->notifySystemSettingChanged("deviceName", "Den"); });
    expectPasses("sdk.setHandsFreeEnabled", [&] { handler->notifyHandsfreeStateChanged(true); });
}

TEST_F(Exceptions, OfTheLoggerLeaveTheRegistries) {
    expectPasses("log 2 SettingsHandler:addFriendlyNameObserver", [&] { handler->addFriendlyNameObserver(nullptr); });
}

}  // namespace SettingsHandlerTests
