#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "WebHostFixture.h"
#include "support/Files.h"
#include "support/ListeningSocket.h"
#include "support/NotificationSocket.h"
#include "wire/Json.h"

namespace SystemTests {

using std::chrono::steady_clock;

/// What clients see of the faults of the shipped host.
class HostFaults : public HostWeb {
protected:
    void switchOn(const std::string& name, const std::string& valueJson = "") {
        EXPECT_EQ(device(R"({"command":"fault","name":")" + name + R"(","enabled":true)" +
                         (valueJson.empty() ? "" : R"(,"value":)" + valueJson) + "}"),
                  R"({"ok":true})");
    }
    void switchOff(const std::string& name) {
        EXPECT_EQ(device(R"({"command":"fault","name":")" + name + R"(","enabled":false})"), R"({"ok":true})");
    }

    static std::string answeredRequest(const std::string& setting, const std::string& value) {
        return R"({"type":24,"messageId":"s","answer":true,"timestamp":1,"payload":{"settingDBId":")" + setting +
               R"(","to":")" + value + "\"}}";
    }
    /// The payload of the answer.
    std::string setAndAnswer(const std::string& setting, const std::string& value) {
        return WireTests::compact(ask(answeredRequest(setting, value))["payload"]);
    }

    std::string health() { return WireTests::healthOf(port).body; }

    /// Starts the host anew by the fault, and reads its ready line.
    void restart() {
        switchOn("restart");
        const std::string ready = host->output().readLine().value_or("(none)");
        const std::size_t place = ready.find("/?key=");
        ASSERT_NE(place, std::string::npos) << ready;
        key = ready.substr(place + 6, ready.find(' ', place) - place - 6);
        disconnect();
    }

    std::string run() { return ask(R"({"messageId":"h","hello":{}})")["hello"]["run"].GetString(); }

    const std::string refused =
        R"("outcome":"refused","reason":"not-stored","message":"the value could not be stored","settingDBId":"deviceName")";
};

TEST_F(HostFaults, AFullDiskRefusesChangesUntilThereIsRoom) {
    startWeb({"--log-level", "2"});
    set("deviceName", "\"Den\"");
    switchOn("storage-full");
    EXPECT_EQ(setAndAnswer("deviceName", "Attic"), "{" + refused + R"(,"value":"Den"})");
    EXPECT_EQ(get("deviceName"), "Den");
    EXPECT_TRUE(contains(device(R"({"command":"timezone","value":"Europe/Paris"})"), "not-written"));
    EXPECT_TRUE(contains(health(), R"("status":"degraded")")) << health();
    EXPECT_TRUE(contains(health(), R"("lastFailure":"database: database or disk is full")")) << health();
    EXPECT_TRUE(contains(health(), R"("faults":["storage-full"])")) << health();
    switchOff("storage-full");
    EXPECT_EQ(setAndAnswer("deviceName", "Attic"),
              R"({"outcome":"changed","settingDBId":"deviceName","value":"Attic"})");
    EXPECT_TRUE(contains(health(), R"("status":"ok")")) << health();
    EXPECT_FALSE(contains(health(), "faults")) << health();
    disconnect();
    const std::string log = stop();
    EXPECT_TRUE(contains(log, "settings-host:fault on: storage-full\n")) << log;
    EXPECT_TRUE(contains(log, "settings-host:fault off: storage-full\n")) << log;
}

TEST_F(HostFaults, AFailingDiskReadsNothingEither) {
    startWeb();
    set("deviceName", "\"Den\"");
    switchOn("storage-failing");
    EXPECT_EQ(setAndAnswer("deviceName", "Attic"), "{" + refused + R"(,"value":"TV"})");
    EXPECT_TRUE(contains(health(), R"("lastFailure":"database: disk I/O error")")) << health();
    EXPECT_TRUE(contains(device(R"({"command":"save"})"), R"("code":"failed")")) << "it would lack values";
    switchOff("storage-failing");
    EXPECT_EQ(get("deviceName"), "Den");
}

TEST_F(HostFaults, ASlowDiskAndASlowVoiceSdkHoldTheHostUp) {
    startWeb();
    switchOn("storage-slow", "80");
    auto begin = steady_clock::now();
    setAndAnswer("deviceName", "Attic");
    EXPECT_GE(steady_clock::now() - begin, std::chrono::milliseconds(80));
    switchOff("storage-slow");
    switchOn("sdk-slow", "60");
    begin = steady_clock::now();
    EXPECT_EQ(get("timezone"), "America/Vancouver");
    EXPECT_GE(steady_clock::now() - begin, std::chrono::milliseconds(60));
}

TEST_F(HostFaults, ARefusingVoiceSdkKeepsItsValue) {
    startWeb();
    switchOn("sdk-refuses", R"("friendlyName")");
    EXPECT_EQ(setAndAnswer("friendlyName", "Attic"),
              R"({"outcome":"changed","settingDBId":"friendlyName","value":"TV","applied":false})");
    switchOn("sdk-refuses", R"("orliaLocale")");
    setAndAnswer("orliaLocale", R"([\"fr-FR\"])");
    EXPECT_EQ(get("orliaLocale"), R"(["en-US"])");
    EXPECT_EQ(setAndAnswer("friendlyName", "Den"),
              R"({"outcome":"changed","settingDBId":"friendlyName","value":"Den"})");
    EXPECT_TRUE(contains(device(R"({"command":"locale","value":"de-DE"})"), "not-written"));
}

TEST_F(HostFaults, AVoiceSdkThatChangesASettingByItselfIsANotice) {
    startWeb();
    const auto watching = page();
    // So that it is known.
    watching->sendText(getRequest("[]"));
    next(*watching);
    switchOn("sdk-changes", R"("timezone")");
    EXPECT_EQ(watching->receiveText(), R"({"notice":{"reread":["timezone"]}})");
    EXPECT_EQ(get("timezone"), "Europe/Paris");
    EXPECT_FALSE(contains(health(), "faults"));
}

TEST_F(HostFaults, LateFramesComeInTheirOrder) {
    startWeb();
    switchOn("replies-late", "80");
    const auto begin = steady_clock::now();
    Lines before;
    EXPECT_EQ(WireTests::compact(ask(answeredRequest("deviceName", "Den"), &before)["payload"]),
              R"({"outcome":"changed","settingDBId":"deviceName","value":"Den"})");
    EXPECT_GE(steady_clock::now() - begin, std::chrono::milliseconds(80));
    ASSERT_EQ(before.size(), 1U);
    EXPECT_TRUE(contains(before[0], R"("to":"Den")"));
    // Long after the end of this test.
    switchOn("replies-late", "60000");
    client().sendLine(getRequest("[]"));
    client().sendLine(getRequest("[]", "last"));
    switchOn("sdk-changes", R"("timezone")");
    switchOff("replies-late");
    const auto reply = ask(R"({"messageId":"h","hello":{}})", &before);
    EXPECT_STREQ(reply["messageId"].GetString(), "g");
}

TEST_F(HostFaults, AnEventCutsConnectionsAndIsThereForAResume) {
    startWeb();
    const std::string known = run();
    const auto watching = page();
    watching->sendText(getRequest("[]"));
    next(*watching);
    switchOn("events-dropped");
    client().sendLine(answeredRequest("deviceName", "Den"));
    EXPECT_EQ(client().receiveLine(), std::nullopt) << "neither event nor answer";
    EXPECT_TRUE(client().closedByPeer());
    EXPECT_EQ(watching->receiveText(), std::nullopt);
    disconnect();
    const std::string resume = R"({"messageId":"h","hello":{"resume":{"run":")" + known + R"(","sequence":0}}})";
    const auto again = page();
    again->sendText(resume);
    EXPECT_STREQ(next(*again)["payload"]["to"].GetString(), "Den");
    EXPECT_FALSE(next(*again)["hello"]["missed"].GetBool());
    switchOff("events-dropped");
    EXPECT_EQ(set("deviceName", "\"Attic\"").size(), 1U);
    EXPECT_STREQ(next(*again)["payload"]["to"].GetString(), "Attic") << "the connection of the resume goes on";
}

TEST_F(HostFaults, AClockThatJumpsIsInTheTimeStampsOfEvents) {
    startWeb();
    const auto timestampOfAnEvent = [&](const std::string& value) {
        const Lines events = set("deviceName", "\"" + value + "\"");
        return events.size() == 1 ? parsed(events[0])["timestamp"].GetInt64() : 0;
    };
    constexpr std::int64_t day = 86400000;
    const auto before = timestampOfAnEvent("1");
    switchOn("clock-jump", std::to_string(day));
    const auto ahead = timestampOfAnEvent("2");
    EXPECT_GE(ahead, before + day);
    switchOn("clock-jump", std::to_string(-day));
    EXPECT_LT(timestampOfAnEvent("3"), ahead - day);
    switchOff("clock-jump");
    const auto after = timestampOfAnEvent("4");
    EXPECT_GE(after, before);
    EXPECT_LT(after, ahead) << "unless this test took a day";
}

TEST_F(HostFaults, ARestartIsANewRunWithoutFaults) {
    startWeb();
    set("deviceName", "\"Den\"");
    const std::string before = run();
    const std::string cookie = cookieOf(TestSupport::httpGet(port, "/?key=" + key));
    switchOn("storage-full");
    switchOn("clock-jump");
    const auto waiting = page();
    restart();
    EXPECT_EQ(waiting->receiveText(), std::nullopt);
    EXPECT_NE(run(), before);
    EXPECT_EQ(get("deviceName"), "Den");
    EXPECT_FALSE(contains(health(), "faults")) << health();
    EXPECT_EQ(setAndAnswer("deviceName", "Attic"),
              R"({"outcome":"changed","settingDBId":"deviceName","value":"Attic"})");
    EXPECT_EQ(TestSupport::httpGet(port, "/", {"Cookie: " + cookie}).body, "<p>page</p>");
    restart();
    EXPECT_EQ(get("deviceName"), "Attic");
    disconnect();
    stop();
    EXPECT_FALSE(std::filesystem::exists(socket())) << "the last run removes the sockets";
    EXPECT_FALSE(std::filesystem::exists(deviceSocket()));
}

TEST_F(HostFaults, ARestartThenASignalStopsTheHost) {
    startWeb();
    WireTests::HostClient person(deviceSocket());
    person.sendLine(R"({"command":"fault","name":"restart","enabled":true})");
    EXPECT_EQ(person.receiveLine(), R"({"ok":true})");
    stop();
    EXPECT_FALSE(std::filesystem::exists(socket()));
}

TEST_F(HostFaults, TheServiceManagerSeesARestartAsAReload) {
    TestSupport::NotificationSocket manager(folder / "notify");
    environment["NOTIFY_SOCKET"] = folder / "notify";
    std::filesystem::create_directory(folder / "passed");
    const auto passed = TestSupport::listeningUnixSocket(folder / "passed/s");
    sockets = {passed.get()};
    environment["LISTEN_FDNAMES"] = "settings";
    host = launch();
    ASSERT_TRUE(host->output().readLine());
    const std::string ready = "READY=1\nSTATUS=Serving at " + (folder / "passed/s");
    const auto next = [&] { return manager.receive().value_or("(none)"); };
    EXPECT_EQ(next(), "STATUS=Opening the database");
    EXPECT_EQ(next().rfind(ready, 0), 0U);
    switchOn("restart");
    EXPECT_EQ(next().rfind("RELOADING=1\nMONOTONIC_USEC=", 0), 0U);
    EXPECT_EQ(next(), "STATUS=Opening the database");
    EXPECT_EQ(next().rfind(ready, 0), 0U);
    WireTests::HostClient served(folder / "passed/s", WireTests::Listener::SETTINGS);
    served.sendLine(getRequest(R"(["deviceName"])"));
    EXPECT_EQ(served.receiveLine(), R"({"type":7,"messageId":"g","payload":{"settings":{"deviceName":"TV"}}})");
    stop();
    EXPECT_EQ(next(), "STOPPING=1\nSTATUS=Draining connections");
    EXPECT_TRUE(std::filesystem::exists(folder / "passed/s")) << "the host removed a passed socket";
}

/// Hosts that start with a world.
class HostWorld : public HostTest {
protected:
    std::string write(const std::string& text) {
        std::ofstream(folder / "world.json") << text;
        return folder / "world.json";
    }

    /// What `save` says, with all values.
    std::string saved() { return device(R"({"command":"save","withValues":true})"); }

    const std::string world =
        R"({"world":1,"settings":{"deviceName":"Den"},"sdk":{"orliaLocale":"[\"fr-FR\"]",)"
        R"("captionsEnabled":"true","doNotDisturbEnabled":"false","timezone":"Europe/Paris"},)"
        R"("device":{"handsFreeEnabled":"true","handsFreeAlwaysOnEnabled":"false",)"
        R"("pttAlwaysOnEnabled":"false"},"faults":{"storage-full":true,"sdk-refuses":"timezone"}})";
};

TEST_F(HostWorld, IsServedAndSavedAsItIs) {
    start({"--world", write(world)});
    EXPECT_EQ(get("deviceName"), "Den");
    EXPECT_EQ(get("orliaLocale"), R"(["fr-FR"])");
    EXPECT_EQ(get("captionsEnabled"), "true");
    EXPECT_EQ(get("handsFreeEnabled"), "true");
    EXPECT_EQ(saved(), R"({"world":)" + world + R"(,"leftOut":[]})");
    EXPECT_EQ(set("deviceName", "\"Attic\"").size(), 0U) << "the disk is full";
    EXPECT_EQ(device(R"({"command":"fault","name":"restart","enabled":true})"), R"({"ok":true})");
    EXPECT_TRUE(host->output().readLine());
    disconnect();
    EXPECT_EQ(set("deviceName", "\"Attic\"").size(), 1U) << "a restart is without faults";
    disconnect();
    stop();
    const std::string before = TestSupport::contentOf(database());
    expectCannotStart(database() + " has values already; --world needs a new database", 1,
                      {"--world", folder / "world.json"});
    EXPECT_EQ(TestSupport::contentOf(database()), before);
    start();
    EXPECT_EQ(get("deviceName"), "Attic");
}

TEST_F(HostWorld, ThatIsWrongChangesNothing) {
    expectCannotStart((folder / "world.json") + ": /sdk/timezone: must be a string", 1,
                      {"--world", write(R"({"world":1,"settings":{"deviceName":"Den"},"sdk":{"timezone":5}})")});
    EXPECT_FALSE(std::filesystem::exists(folder / "state"));
    EXPECT_FALSE(std::filesystem::exists(folder / "run"));
    expectCannotStart("--world excludes --reset", 2, {"--world", folder / "world.json", "--reset", "--yes"});
}

}  // namespace SystemTests
