#include "HandlerFixture.h"

namespace SettingsHandlerTests {

/// Tries from another thread whether the cache mutex is held at the moment when an entry is recorded.
class Locks : public HandlerTest {
protected:
    void expectHeldAt(const std::string& entry, const std::function<void()>& operation) {
        // Long enough if the mutex is free; if it is held, the probe never ends before the operation.
        EXPECT_FALSE(isFreeAt(entry, operation, std::chrono::milliseconds(30))) << entry;
    }

    void expectFreeAt(const std::string& entry, const std::function<void()>& operation) {
        EXPECT_TRUE(isFreeAt(entry, operation, std::chrono::seconds(20))) << entry;
    }

private:
    bool isFreeAt(const std::string& entry, const std::function<void()>& operation, std::chrono::milliseconds limit) {
        bool free = false;
        std::future<void> probe;
        journal.at(entry, [&] {
            probe = startProbe();
            free = probe.wait_for(limit) == std::future_status::ready;
        });
        operation();
        if (probe.valid()) {
            probe.wait();
        } else {
            ADD_FAILURE() << entry << " did not happen";
        }
        journal.take();
        return free;
    }

    /// Starts a thread that locks and unlocks the mutex and records nothing.
    std::future<void> startProbe() {
        std::promise<void> promise;
        const auto running = promise.get_future();
        auto probe = std::async(std::launch::async, [this, started = std::move(promise)]() mutable {
            started.set_value();
            handler->removeFriendlyNameObserver(unknown);
        });
        running.wait();
        return probe;
    }

    std::shared_ptr<SettingsHandlerTesting::FakeFriendlyNameObserver> unknown =
        std::make_shared<SettingsHandlerTesting::FakeFriendlyNameObserver>(journal);
};

TEST_F(Locks, InitialisationHoldsTheMutexThroughout) {
    for (const auto* entry : {"log 0 SettingsHandler:getSettings", "storage.getValue", "sdk.getLocales",
                              "sdk.getTimezone", "sdk.isCaptionsEnabled", "sdk.isDoNotDisturbEnabled",
                              "device.getDeviceInfo", "log 1 Setting initial hands free", "sdk.setHandsFreeEnabled",
                              "sdk.applySetting(handsFreeAlwaysOn", "sdk.applySetting(pttAlwaysOn"}) {
        expectHeldAt(entry, [&] { handler->initializeSettings(); });
    }
}

TEST_F(Locks, TheCurrentMapHoldsTheMutexAfterItsLine) {
    expectFreeAt("log 1 SettingsHandler:getCurrentSettingsMap", [&] { handler->getCurrentSettingsMap(); });
    for (const auto* entry : {"sdk.isDoNotDisturbEnabled", "sdk.isCaptionsEnabled", "sdk.getLocales", "sdk.getTimezone",
                              "device.getDeviceInfo"}) {
        expectHeldAt(entry, [&] { handler->getCurrentSettingsMap(); });
    }
}

TEST_F(Locks, ReadingHoldsNoLock) {
    storage.values["unknown"] = "x";
    for (const auto* entry : {"log 0 SettingsHandler:getSettings", "storage.getValue(unknown)", "sdk.getLocales",
                              "device.getDeviceInfo", "transport.sendResponse"}) {
        expectFreeAt(entry, [&] {
            handler->handleGetSettingsRequest(
                R"({"messageId":"m","payload":{"settings":["unknown","orliaLocale","handsFreeEnabled"]}})");
        });
    }
}

TEST_F(Locks, WritingHoldsNoLockDuringCalls) {
    handler->addOrliaLocaleObserver(std::make_shared<SettingsHandlerTesting::FakeLocaleObserver>(journal));
    handler->addFriendlyNameObserver(std::make_shared<SettingsHandlerTesting::FakeFriendlyNameObserver>(journal));
    handler->addEntitlementStatusObserver(std::make_shared<SettingsHandlerTesting::FakeEntitlementObserver>(journal));
    int round = 0;
    const auto value = [&] { return std::to_string(++round); };
    for (const auto* entry :
         {"log 0 SettingsHandler:setSetting", "storage.setValue", "log 1 SettingsHandler:deviceName",
          "transport.sendMessage", "metrics.recordCounter", "metrics.recordEvent"}) {
        expectFreeAt(entry, [&] { handler->setSetting("deviceName", value()); });
    }
    for (const auto* entry : {"sdk.getLocales", "sdk.setLocales", "transport.sendMessage", "metrics.recordEvent",
                              "metricsCache.setOrliaLocale", "observer.orliaLocale"}) {
        expectFreeAt(entry, [&] { handler->setSetting("orliaLocale", "[\"" + value() + "\"]"); });
    }
    for (const auto* entry : {"sdk.getTimezone", "sdk.setTimezone", "transport.sendMessage"}) {
        expectFreeAt(entry, [&] { handler->setSetting("timezone", value()); });
    }
    for (const auto* entry : {"sdk.applySetting", "observer.friendlyName", "transport.sendMessage"}) {
        expectFreeAt(entry, [&] { handler->setSetting("friendlyName", value()); });
    }
    for (const auto* entry : {"storage.setValue", "log 1 SettingsHandler:onEntitlementStatusChanged",
                              "observer.entitlementStatus", "transport.sendMessage"}) {
        expectFreeAt(entry, [&] { handler->setSetting("tovanEntitlementStatus", value()); });
    }
    expectFreeAt("sdk.setHandsFreeEnabled", [&] { handler->setSetting("handsFreeEnabled", value()); });
}

TEST_F(Locks, MigrationLogOutAndLaunchHoldNoLock) {
    for (const auto* entry : {"log 1 SettingsHandler:migrateExistingDeviceSettings", "storage.getValue(orliaLocale)",
                              "sdk.setTimezone", "storage.removeValue"}) {
        storage.values["timezone"] = std::string("zone of ") + entry;
        expectFreeAt(entry, [&] { handler->migrateExistingDeviceSettings(); });
    }
    for (const auto* entry :
         {"sdk.applySetting", "sdk.setHandsFreeEnabled", "storage.clearStorage", "sdk.getLocales"}) {
        expectFreeAt(entry, [&] { handler->handleLogOutRequest(); });
    }
    expectFreeAt("app.launchApp", [&] { handler->openVASettings(); });
}

TEST_F(Locks, NotificationsHoldNoLock) {
    for (const auto* entry : {"log 1 SettingsHandler:notifyLocaleChange", "sdk.getLocales", "sdk.setLocales"}) {
        expectFreeAt(entry, [&] { handler->notifyLocaleChange(std::string("l") + entry); });
    }
    expectFreeAt("sdk.setLocales", [&] { handler->notifyLocaleChange(std::vector<std::string>{"a", "b"}); });
    expectFreeAt("sdk.setTimezone", [&] { handler->notifyTimezoneChange("zone"); });
    expectFreeAt("storage.setValue", [&] { handler->notifySystemSettingChanged("deviceName", "new"); });
    expectFreeAt("sdk.setHandsFreeEnabled", [&] { handler->notifyHandsfreeStateChanged(true); });
}

TEST_F(Locks, ANullObserverIsReportedWithoutTheMutex) {
    expectFreeAt("log 2 SettingsHandler:addFriendlyNameObserver", [&] { handler->addFriendlyNameObserver(nullptr); });
    // This thread holds the mutex meanwhile: a null observer does not wait for it.
    journal.at("sdk.getTimezone", [&] {
        auto report = std::async(std::launch::async, [&] {
            handler->addOrliaLocaleObserver(nullptr);
            handler->removeEntitlementStatusObserver(nullptr);
        });
        EXPECT_EQ(report.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    });
    handler->getCurrentSettingsMap();
}

TEST_F(Locks, OperationsOnCacheOrObserversWaitForTheMutex) {
    const auto locale = std::make_shared<SettingsHandlerTesting::FakeLocaleObserver>(journal);
    const auto friendly = std::make_shared<SettingsHandlerTesting::FakeFriendlyNameObserver>(journal);
    const auto entitlement = std::make_shared<SettingsHandlerTesting::FakeEntitlementObserver>(journal);
    const std::map<std::string, std::function<void()>> operations{
        {"addOrliaLocaleObserver", [&] { handler->addOrliaLocaleObserver(locale); }},
        {"addFriendlyNameObserver", [&] { handler->addFriendlyNameObserver(friendly); }},
        {"removeFriendlyNameObserver", [&] { handler->removeFriendlyNameObserver(friendly); }},
        {"addEntitlementStatusObserver", [&] { handler->addEntitlementStatusObserver(entitlement); }},
        {"removeEntitlementStatusObserver", [&] { handler->removeEntitlementStatusObserver(entitlement); }},
        {"onOrliaLocaleChange", [&] { handler->onOrliaLocaleChange({"en-US"}); }},
        {"onFriendlyNameChanged", [&] { handler->onFriendlyNameChanged("Den"); }},
        {"onEntitlementStatusChanged", [&] { handler->onEntitlementStatusChanged("active"); }},
        {"settingChanged",
         [&] {
             std::string old;
             handler->settingChanged("deviceName", old, "Den");
         }},
        {"setSetting", [&] { handler->setSetting("captionsStyles", ""); }},
        {"getCurrentSettingsMap", [&] { handler->getCurrentSettingsMap(); }},
        {"initializeSettings", [&] { handler->initializeSettings(); }},
    };
    std::map<std::string, std::future<void>> waiting;
    journal.at("sdk.getTimezone", [&] {
        for (const auto& [name, operation] : operations) {
            waiting[name] = std::async(std::launch::async, operation);
        }
        for (const auto& [name, operation] : waiting) {
            EXPECT_EQ(operation.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout) << name;
        }
    });
    handler->getCurrentSettingsMap();
    for (auto& [name, operation] : waiting) {
        EXPECT_EQ(operation.wait_for(std::chrono::seconds(20)), std::future_status::ready) << name;
    }
}

TEST_F(Locks, ObserversCallBackOnTheSameThread) {
    const auto locale = std::make_shared<SettingsHandlerTesting::FakeLocaleObserver>(journal);
    const auto friendly = std::make_shared<SettingsHandlerTesting::FakeFriendlyNameObserver>(journal);
    const auto entitlement = std::make_shared<SettingsHandlerTesting::FakeEntitlementObserver>(journal);
    int reactions = 0;
    const auto useEverything = [&] {
        ++reactions;
        handler->getCurrentSettingsMap();
        handler->getSettings({});
        handler->setSetting("deviceName", "reaction " + std::to_string(reactions));
        handler->addFriendlyNameObserver(friendly);
        handler->removeEntitlementStatusObserver(nullptr);
        handler->initializeSettings();
    };
    for (const auto& observer : {&locale->reaction, &friendly->reaction, &entitlement->reaction}) {
        *observer = useEverything;
    }
    handler->addOrliaLocaleObserver(locale);
    handler->addFriendlyNameObserver(friendly);
    handler->addEntitlementStatusObserver(entitlement);
    handler->setSetting("orliaLocale", R"(["fr-FR"])");
    handler->setSetting("friendlyName", "Den");
    handler->setSetting("tovanEntitlementStatus", "active");
    EXPECT_EQ(reactions, 3);
}

}  // namespace SettingsHandlerTests
