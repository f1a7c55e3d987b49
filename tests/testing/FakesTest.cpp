#include <chrono>
#include <future>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CommunicationHandler/MessageType.h"
#include "SettingsHandlerTesting/Actions.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeObservers.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/FakeTransport.h"
#include "SettingsHandlerTesting/Gate.h"

namespace SettingsHandlerTesting {

using Entries = std::vector<std::string>;
using Values = std::map<std::string, std::string>;

TEST(JournalTest, KeepsTheOrderAndIsEmptyOnceTaken) {
    Journal journal;
    journal.add("first");
    journal.add("second");
    EXPECT_EQ(journal.take(), (Entries{"first", "second"}));
    EXPECT_EQ(journal.take(), Entries{});
}

TEST(JournalTest, RunsAnActionOnceAndAfterItsEntryIsRecorded) {
    Journal journal;
    journal.at("call(", [&] { journal.add("inside"); });
    EXPECT_FALSE(journal.allActionsRun());
    journal.add("other call(");
    journal.add("call(1)");
    journal.add("call(2)");
    EXPECT_TRUE(journal.allActionsRun());
    EXPECT_EQ(journal.take(), (Entries{"other call(", "call(1)", "inside", "call(2)"}));
}

TEST(JournalTest, RunsTheOldestMatchingAction) {
    Journal journal;
    Entries run;
    journal.at("call", [&] { run.emplace_back("first"); });
    journal.at("call(2", [&] { run.emplace_back("second"); });
    journal.add("call(2)");
    EXPECT_EQ(run, Entries{"first"});
    journal.add("call(2)");
    EXPECT_EQ(run, (Entries{"first", "second"}));
}

TEST(JournalTest, RunsAnActionAtEveryEntryUntilItIsRemoved) {
    Journal journal;
    int calls = 0;
    journal.atEvery("call(", [&] { ++calls; });
    EXPECT_TRUE(journal.allActionsRun()) << "such an action waits for nothing in particular";
    journal.add("call(1)");
    journal.add("call(2)");
    journal.add("other");
    EXPECT_EQ(calls, 2);
    journal.at("never", [] {});
    journal.forgetActions();
    journal.add("call(3)");
    EXPECT_EQ(calls, 2);
    EXPECT_TRUE(journal.allActionsRun());
}

TEST(ActionsTest, AnExceptionLeavesTheCallBeforeItChangesAnything) {
    Journal journal;
    FakeStorage storage(journal);
    journal.at("storage.setValue", throwing("the disk is gone"));
    try {
        storage.setValue("k", "v");
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "the disk is gone");
    }
    EXPECT_TRUE(storage.values.empty());
    EXPECT_TRUE(storage.setValue("k", "v"));
}

TEST(ActionsTest, ADelayTakesAtLeastItsTime) {
    const auto begin = std::chrono::steady_clock::now();
    pausing(std::chrono::milliseconds(5))();
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(5));
}

TEST(GateTest, BlocksAThreadUntilItIsOpened) {
    Journal journal;
    FakeStorage storage(journal);
    Gate gate;
    journal.at("storage.setValue", gate.holding());
    auto writer = std::async(std::launch::async, [&] { storage.setValue("k", "new"); });
    gate.awaitArrival();
    // Long enough for a thread that nothing holds; one that is held never ends before the gate is opened.
    EXPECT_EQ(writer.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout) << "it went on";
    EXPECT_EQ(storage.stored("k"), "");
    gate.open();
    writer.get();
    EXPECT_EQ(storage.stored("k"), "new");
    gate.awaitArrival();
    gate.holding()();
}

TEST(FakeStorageTest, RefusesAndChangesNothing) {
    Journal journal;
    FakeStorage storage(journal);
    storage.values = {{"k", "v"}};
    storage.refusesWrites = storage.refusesRemoval = storage.refusesClearing = true;
    EXPECT_FALSE(storage.setValue("k", "w"));
    EXPECT_FALSE(storage.removeValue("k"));
    EXPECT_FALSE(storage.clearStorage());
    EXPECT_EQ(storage.values, (Values{{"k", "v"}}));
    EXPECT_EQ(journal.take(), (Entries{"storage.setValue(k, w)", "storage.removeValue(k)", "storage.clearStorage()"}));
}

TEST(FakeStorageTest, RefusesSomeKeysOrSomeWrites) {
    Journal journal;
    FakeStorage storage(journal);
    storage.put("a", "1");
    storage.refusedKeys = {"a"};
    EXPECT_FALSE(storage.setValue("a", "2"));
    EXPECT_FALSE(storage.removeValue("a"));
    EXPECT_TRUE(storage.setValue("b", "2"));
    storage.refusedWrites = 2;
    EXPECT_FALSE(storage.setValue("b", "3"));
    EXPECT_FALSE(storage.setValue("a", "3"));
    EXPECT_TRUE(storage.setValue("b", "4"));
    EXPECT_EQ(storage.values, (Values{{"a", "1"}, {"b", "4"}}));
}

TEST(FakeStorageTest, PutAndStoredRecordNoEntry) {
    Journal journal;
    FakeStorage storage(journal);
    storage.put("k", "v");
    EXPECT_EQ(storage.stored("k"), "v");
    EXPECT_EQ(storage.stored("absent"), "");
    EXPECT_EQ(journal.take(), Entries{});
}

TEST(FakeSdkBridgeTest, RecordsAndKeepsValuesAndCallsHandsOn) {
    Journal journal;
    FakeSdkBridge sdk(journal);
    Entries handedOn;
    sdk.handsOn = [&](const std::string& key, const std::string& value) { handedOn.push_back(key + "=" + value); };
    sdk.refusedSettings = {"pttAlwaysOnEnabled"};
    sdk.setHandsFreeEnabled(true);
    EXPECT_TRUE(sdk.applySetting("friendlyName", "Den"));
    EXPECT_FALSE(sdk.applySetting("pttAlwaysOnEnabled", "true"));
    sdk.setTimezone("Europe/Paris");
    sdk.setLocales({"fr-FR", "en-US"});
    EXPECT_EQ(journal.take(), (Entries{"sdk.setHandsFreeEnabled(true)", "sdk.applySetting(friendlyName, Den)",
                                       "sdk.applySetting(pttAlwaysOnEnabled, true)", "sdk.setTimezone(Europe/Paris)",
                                       "sdk.setLocales(fr-FR|en-US)"}));
    EXPECT_EQ(handedOn, (Entries{"handsFreeEnabled=true", "friendlyName=Den"}));
    EXPECT_EQ(sdk.applied, (Values{{"friendlyName", "Den"}, {"handsFreeEnabled", "true"}}));
    EXPECT_EQ(sdk.timezone, "Europe/Paris");
    EXPECT_EQ(sdk.locales, (Entries{"fr-FR", "en-US"}));
}

TEST(FakeSdkBridgeTest, KeepsTheOldValuesWhenItRefuses) {
    Journal journal;
    FakeSdkBridge sdk(journal);
    sdk.refusesSettings = sdk.refusesTimezone = sdk.refusesLocales = sdk.refusesHandsFree = true;
    sdk.setHandsFreeEnabled(true);
    EXPECT_FALSE(sdk.applySetting("friendlyName", "Den"));
    sdk.setTimezone("Europe/Paris");
    sdk.setLocales({"fr-FR"});
    EXPECT_EQ(sdk.applied, Values{});
    EXPECT_EQ(sdk.timezone, "America/Vancouver");
    EXPECT_EQ(sdk.locales, Entries{"en-US"});
}

TEST(FakeDeviceTest, SwitchesModesAndReturnsTheConfiguredResult) {
    Journal journal;
    FakeDeviceInfo device(journal);
    EXPECT_EQ(device.getDeviceInfo(), Values{});
    device.switchMode(handsFreeMode, true);
    device.switchMode(alwaysOnPttMode, false);
    EXPECT_EQ(device.getDeviceInfo(), (Values{{"currentHandsFreeStatus", "on"}, {"currentAlwaysOnPTTMode", "off"}}));
    FakeAppLaunch launcher(journal);
    EXPECT_FALSE(launcher.launchApp("settings-app", ""));
    launcher.launches = true;
    EXPECT_TRUE(launcher.launchApp("settings-app", "x"));
    EXPECT_EQ(journal.take(), (Entries{"device.getDeviceInfo()", "device.getDeviceInfo()",
                                       "app.launchApp(settings-app, )", "app.launchApp(settings-app, x)"}));
}

TEST(FakeMetricsTest, CountsAndRecords) {
    Journal journal;
    FakeMetrics metrics(journal);
    metrics.recordCounter("a", 0, 1, 1.5);
    metrics.recordCounter("a", 0, 1, 1);
    metrics.recordEvent("group", "source", {{"z", "1"}, {"b", "2"}});
    EXPECT_EQ(metrics.counters(), (std::map<std::string, int>{{"a", 2}}));
    EXPECT_EQ(journal.take(), (Entries{"metrics.recordCounter(a, 0, 1, 1.5)", "metrics.recordCounter(a, 0, 1, 1)",
                                       "metrics.recordEvent(group, source, b=2, z=1)"}));
}

class FakeTransportTest : public ::testing::Test {
protected:
    static rapidjson::Document payload(const char* value) {
        rapidjson::Document document(rapidjson::kObjectType);
        document.AddMember("to", rapidjson::Value(value, document.GetAllocator()), document.GetAllocator());
        return document;
    }

    Journal journal;
};

TEST_F(FakeTransportTest, DeliversRequestsAndGivesTheirReplies) {
    FakeTransport transport(journal);
    Entries delivered;
    transport.registerMessageHandler(7, [&](const std::string& text) {
        delivered.push_back(text);
        auto event = payload("told");
        EXPECT_EQ(transport.sendMessage(25, event), "event-1");
        auto reply = payload("answer");
        transport.sendResponse("m1", reply);
    });
    EXPECT_EQ(transport.request(7, settingsPayload({"a\"b"})), R"({"to":"answer"})");
    EXPECT_EQ(delivered, Entries{R"({"type":7,"messageId":"m1","timestamp":1,"payload":{"settings":["a\"b"]}})"});
    EXPECT_EQ(transport.takeSent(),
              (std::vector<SentMessage>{{25, "event-1", R"({"to":"told"})"}, {0, "m1", R"({"to":"answer"})"}}));
    EXPECT_EQ(transport.takeSent(), std::vector<SentMessage>{});
    EXPECT_EQ(journal.take(),
              (Entries{"transport.registerMessageHandler(7)", R"(transport.sendMessage(25, {"to":"told"}))",
                       R"(transport.sendResponse(m1, {"to":"answer"}))"}));
}

TEST_F(FakeTransportTest, SeparatesEventsAndReplies) {
    FakeTransport transport(journal);
    auto event = payload("e");
    transport.sendMessage(25, event);
    auto reply = payload("r");
    transport.sendResponse("m", reply);
    EXPECT_EQ(transport.takeEvents(), (std::vector<SentMessage>{{25, "event-1", R"({"to":"e"})"}}));
    EXPECT_EQ(transport.takeEvents(), std::vector<SentMessage>{});
    EXPECT_EQ(transport.takeReplies(), (std::vector<SentMessage>{{0, "m", R"({"to":"r"})"}}));
}

TEST_F(FakeTransportTest, WritesItsOwnNamesAndRisingTimestamps) {
    FakeTransport transport(journal, "id", "time", "body");
    Entries delivered;
    EXPECT_FALSE(transport.handles(24));
    EXPECT_THROW(transport.request(24), std::out_of_range);
    transport.registerMessageHandler(24, [&](const std::string& text) { delivered.push_back(text); });
    EXPECT_TRUE(transport.handles(24));
    EXPECT_EQ(transport.request(24, changePayload("k", "v")), "") << "nobody answered";
    transport.request(24);
    EXPECT_EQ(delivered, (Entries{R"({"type":24,"id":"m2","time":2,"body":{"settingDBId":"k","to":"v"}})",
                                  R"({"type":24,"id":"m3","time":3,"body":{}})"}));
}

TEST_F(FakeTransportTest, MovesPayloadsAwayUnlessItIsToldToKeepThem) {
    FakeTransport transport(journal);
    auto document = payload("x");
    transport.sendMessage(25, document);
    EXPECT_TRUE(document.IsNull());
    transport.keepsPayloads = true;
    document = payload("y");
    transport.sendMessage(25, document);
    transport.sendResponse("m", document);
    EXPECT_EQ(jsonText(document), R"({"to":"y"})");
}

TEST(FakeObserversTest, RecordUnderTheirNamesAndReact) {
    Journal journal;
    FakeLocaleObserver locale(journal);
    FakeFriendlyNameObserver name(journal, "second");
    FakeEntitlementObserver entitlement(journal);
    for (auto* const reaction : {&locale.reaction, &name.reaction, &entitlement.reaction}) {
        *reaction = [&] { journal.add("reaction"); };
    }
    locale.notifyOrliaLocaleChanged("en-US");
    name.notifyFriendlyNameChanged("Den");
    entitlement.notifyEntitlementStatusChanged("active");
    EXPECT_EQ(journal.take(), (Entries{"observer.orliaLocale(en-US)", "reaction", "second.friendlyName(Den)",
                                       "reaction", "observer.entitlementStatus(active)", "reaction"}));
}

}  // namespace SettingsHandlerTesting
