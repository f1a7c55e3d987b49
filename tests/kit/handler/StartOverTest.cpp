#include <stdexcept>

#include "CheckedHandlerFixture.h"

namespace SettingsHandlerKit {

namespace {

using namespace SettingsHandlerTesting;

class StartOver : public CheckedHandler {
protected:
    StartOver() {
        world->addOrliaLocaleObserver(std::make_shared<FakeLocaleObserver>(world.journal));
        world->addFriendlyNameObserver(std::make_shared<FakeFriendlyNameObserver>(world.journal));
        world->addEntitlementStatusObserver(std::make_shared<FakeEntitlementObserver>(world.journal));
    }

    void set(const std::string& key, const std::string& value, long timestamp = 1) {
        CheckedHandler::set(change(key, value), timestamp);
    }

    /// What the owners have before a change that they take back.
    void takeBack() {
        world.storage.values = {{"friendlyName", "Kitchen"}, {"tovanEntitlementStatus", "active"}};
        world.sdkBridge->locales = {"it-IT", "de-DE"};
        world.sdkBridge->timezone = "Europe/Rome";
        world.deviceInfo->switchMode(handsFreeMode, false);
    }

    Entries notifications() {
        Entries found;
        for (const auto& entry : world.journal.take()) {
            if (entry.rfind("observer.", 0) == 0 || entry.rfind("metricsCache.", 0) == 0) {
                found.push_back(entry);
            }
        }
        return found;
    }
};

TEST_F(StartOver, NotifiesObserversOfTheRestoredValues) {
    set("friendlyName", "Den");
    set("tovanEntitlementStatus", "expired");
    set("orliaLocale", R"(["fr-FR"])");
    world.journal.take();
    takeBack();
    world->startOver({"deviceName", "friendlyName", "orliaLocale", "timezone", "tovanEntitlementStatus", "unknown"});
    EXPECT_EQ(notifications(), (Entries{"observer.friendlyName(Kitchen)", "metricsCache.setOrliaLocale(it-IT)",
                                        "observer.orliaLocale(it-IT)", "observer.entitlementStatus(active)"}));
    EXPECT_EQ(world.transport->takeEvents().size(), 3U) << "those of the three changes";
}

TEST_F(StartOver, TellsNoOtherObservers) {
    takeBack();
    world->startOver({});
    world->startOver({"deviceName", "unknown"});
    EXPECT_EQ(notifications(), Entries{});
}

TEST_F(StartOver, TellsDefaultsAndAbsentValues) {
    world.sdkBridge->locales.clear();
    world->startOver({"friendlyName", "orliaLocale", "tovanEntitlementStatus"});
    EXPECT_EQ(notifications(),
              (Entries{"observer.friendlyName(" + world->getSettings({"friendlyName"})["friendlyName"] + ")",
                       "metricsCache.setOrliaLocale()", "observer.orliaLocale()", "observer.entitlementStatus()"}));
}

TEST_F(StartOver, ForgetsValuesThatOwnersTookBack) {
    set("deviceName", "Den");
    set("handsFreeEnabled", "true");
    set("an unknown key", std::string(100, 'v'));
    takeBack();
    world->startOver({});
    const auto values = world->getCurrentSettingsMap();
    EXPECT_EQ(values.at("deviceName"), "TV");
    EXPECT_EQ(values.at("handsFreeEnabled"), "false");
    EXPECT_EQ(values.count("an unknown key"), 0U);
    EXPECT_EQ(world.sdkBridge->applied["handsFreeEnabled"], "false");
    world.transport->takeEvents();
    set("deviceName", "Den");
    EXPECT_EQ(outcome(), outcomeOf(Kind::CHANGED, "deviceName"));
    EXPECT_EQ(world.transport->takeEvents().size(), 1U);
}

TEST_F(StartOver, ForgetsTheTimeStampsOfRequests) {
    for (const std::string key : {"deviceName", "an unknown key"}) {
        SCOPED_TRACE(key);
        set(key, "first", 100);
        world->startOver({});
        set(key, "second", 50);
        EXPECT_EQ(outcome(), outcomeOf(Kind::CHANGED, key));
        set(key, "third", 49);
        EXPECT_EQ(outcome(), refusedFor(Reason::STALE, key, 50));
        set(key, "fourth", 50);
        EXPECT_EQ(outcome(), outcomeOf(Kind::CHANGED, key));
        set(key, "fifth", 60);
        set(key, "sixth", 55);
        EXPECT_EQ(outcome(), refusedFor(Reason::STALE, key, 60));
        set(key, "seventh", 200);
        set(key, "eighth", 150);
        EXPECT_EQ(outcome(), refusedFor(Reason::STALE, key, 200));
        world->startOver({});
        set(key, "ninth", -5);
        EXPECT_EQ(outcome(), outcomeOf(Kind::CHANGED, key));
    }
}

TEST_F(StartOver, MigratesAsAfterARestart) {
    world.storage.put("orliaLocale", R"(["fr-FR"])");
    world.storage.put("timezone", "Europe/Paris");
    world->startOver({"orliaLocale"});
    EXPECT_EQ(world.sdkBridge->locales, std::vector<std::string>{"fr-FR"});
    EXPECT_EQ(world.sdkBridge->timezone, "Europe/Paris");
    EXPECT_EQ(world.storage.stored("timezone"), "");
    EXPECT_EQ(notifications(), (Entries{"metricsCache.setOrliaLocale(en-US)", "observer.orliaLocale(en-US)",
                                        "metricsCache.setOrliaLocale(fr-FR)", "observer.orliaLocale(fr-FR)"}));
}

TEST_F(StartOver, TellsTheObserversAlsoWhenTheMigrationFails) {
    world.storage.put("orliaLocale", "5");
    world.storage.refusesWrites = true;
    EXPECT_THROW(world->startOver({"friendlyName"}), std::runtime_error);
    EXPECT_EQ(notifications().size(), 1U);
}

TEST_F(StartOver, LeavesTheOutcomeAsItIs) {
    set("timezone", "Europe/Rome");
    world.storage.put("timezone", "Europe/Rome");
    const Outcome before = outcome();
    world->startOver({});
    EXPECT_EQ(outcome(), before);
}

}  // namespace

}  // namespace SettingsHandlerKit
