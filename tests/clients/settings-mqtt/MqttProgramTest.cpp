#include <algorithm>
#include <set>

#include "ProgramFixture.h"
#include "support/Files.h"
#include "support/NotificationSocket.h"

namespace SettingsMqttTest {

TEST_F(MqttProgram, PublishesValuesAndChangesAndCarriesCommandsOut) {
    RunningBridge bridge(host, broker.address());
    Subscriber subscriber(
        broker.port(), {"settings/tv/state/#", "settings/tv/outcome", "settings/tv/event", "settings/tv/availability"});
    subscriber.await("settings/tv/availability online");
    publish(broker.port(), "settings/tv/set/captionsFontSize", R"({"value":"FONT_LARGE","id":"order-1"})");
    const std::string expected =
        outcome(R"("key":"captionsFontSize","outcome":"changed","value":"FONT_LARGE","id":"order-1")");
    EXPECT_EQ(subscriber.await("settings/tv/outcome"), expected);
    EXPECT_EQ(subscriber.next(), "settings/tv/state/captionsFontSize FONT_LARGE");
    const std::string event = subscriber.next();
    EXPECT_EQ(
        event.rfind(
            R"(settings/tv/event {"key":"captionsFontSize","from":"FONT_MEDIUM","to":"FONT_LARGE","sequence":1,)", 0),
        0U)
        << event;
    EXPECT_NE(event.find(R"("origin":"socket","client":"settings-mqtt"})"), std::string::npos) << event;
    // Once more, as a broker may deliver it.
    publish(broker.port(), "settings/tv/set/captionsFontSize", R"({"value":"FONT_LARGE","id":"order-1"})");
    EXPECT_EQ(subscriber.next(), expected);
    host.run({"device", "captions", "on"});
    EXPECT_EQ(subscriber.next(), "settings/tv/state/captionsEnabled true");
    publish(broker.port(), "settings/tv/set/captionsEnabled", "false");
    EXPECT_EQ(
        subscriber.next(),
        outcome(
            R"("key":"captionsEnabled","outcome":"refused","value":"true","reason":"read-only","message":"only the device changes this setting")"));
    EXPECT_EQ(bridge.stop(), 0);
    EXPECT_EQ(subscriber.next(), "settings/tv/availability offline");
}

TEST_F(MqttProgram, PublishesNothingPersonalAndSubscribesToItsCommandsOnly) {
    set("deviceName", "Ada's room");
    Subscriber subscriber(broker.port(), {"#"});
    RunningBridge bridge(host, broker.address(), "tv", {"--group", "lobby", "--group", "floor-3", "--home-assistant"});
    subscriber.await("settings/tv/availability online");
    set("deviceName", "Bob's room");
    set("captionsFontSize", "FONT_SMALL");
    for (const auto& message : subscriber.until("settings/tv/event")) {
        EXPECT_EQ(message.find(" room"), std::string::npos) << message;
    }
    std::set<std::string> filters;
    std::istringstream log(broker.log());
    for (std::string line; std::getline(log, line);) {
        if (const auto place = line.find("settings-tv 1 "); place != std::string::npos) {
            filters.insert(line.substr(place + 14));
        }
    }
    EXPECT_EQ(filters, (std::set<std::string>{"settings/tv/set/+", "settings/tv/desired/+", "settings/all/set/+",
                                              "settings/group/lobby/set/+", "settings/group/lobby/desired/+",
                                              "settings/group/floor-3/set/+", "settings/group/floor-3/desired/+"}));
}

TEST_F(MqttProgram, LeavesNoPersonalValueAtTheBrokerAfterALogOut) {
    RunningBridge bridge(host, broker.address(), "tv",
                         {"--include", "deviceName", "--include", "tovanEntitlementStatus"});
    Subscriber subscriber(broker.port(), {"settings/tv/#"});
    subscriber.await("settings/tv/availability online");
    publish(broker.port(), "settings/tv/set/deviceName", "Ada's room");
    set("tovanEntitlementStatus", "ENTITLED");
    subscriber.await(R"(settings/tv/event {"key":"tovanEntitlementStatus")");
    EXPECT_EQ(kept({"settings/tv/state/deviceName"}), "settings/tv/state/deviceName Ada's room");
    ASSERT_EQ(host.run({"logout"}).status, 0);
    subscriber.await("settings/tv/state/tovanEntitlementStatus (null)");
    EXPECT_EQ(
        kept({"settings/tv/state/deviceName", "settings/tv/state/tovanEntitlementStatus", "settings/tv/availability"}),
        "settings/tv/availability online");
}

TEST_F(MqttProgram, EmptiesTopicsThatAnEarlierRunOffered) {
    set("deviceName", "Ada's room");
    Subscriber subscriber(broker.port(),
                          {"settings/tv/availability", "homeassistant/text/settings-tv/deviceName/config"});
    {
        RunningBridge bridge(host, broker.address(), "tv", {"--include", "deviceName", "--home-assistant"});
        subscriber.await("settings/tv/availability online");
        EXPECT_EQ(kept({"settings/tv/state/deviceName"}), "settings/tv/state/deviceName Ada's room");
    }
    subscriber.await("settings/tv/availability offline");
    RunningBridge bridge(host, broker.address(), "tv", {"--home-assistant"});
    EXPECT_EQ(subscriber.next(), "homeassistant/text/settings-tv/deviceName/config (null)");
    subscriber.await("settings/tv/availability online");
    EXPECT_EQ(kept({"settings/tv/state/deviceName", "settings/tv/availability"}), "settings/tv/availability online");
}

TEST_F(MqttProgram, EachDeviceAnswersCommandsForMany) {
    SettingsCtlTests::RunningHost otherHost;
    RunningBridge bridge(host, broker.address(), "tv", {"--group", "lobby"});
    RunningBridge other(otherHost, broker.address(), "tv2");
    Subscriber subscriber(broker.port(), {"settings/+/outcome", "settings/+/availability"});
    std::set<std::string> there{subscriber.await("settings/tv"), subscriber.await("settings/tv")};
    EXPECT_EQ(there, (std::set<std::string>{"settings/tv/availability online", "settings/tv2/availability online"}));
    publish(broker.port(), "settings/all/set/captionsFontSize", "FONT_SMALL");
    const std::string small = R"(/outcome {"key":"captionsFontSize","outcome":"changed","value":"FONT_SMALL"})";
    std::set<std::string> answers{subscriber.next(), subscriber.next()};
    EXPECT_EQ(answers, (std::set<std::string>{"settings/tv" + small, "settings/tv2" + small}));
    publish(broker.port(), "settings/group/lobby/set/captionsFontSize", "FONT_LARGE");
    EXPECT_EQ(subscriber.next(),
              "settings/tv"
              R"(/outcome {"key":"captionsFontSize","outcome":"changed","value":"FONT_LARGE"})");
    EXPECT_EQ(otherHost.run({"get", "--value", "captionsFontSize"}).output, "FONT_SMALL\n");
}

TEST_F(MqttProgram, ADeviceThatWasOffTakesTheNewestDesiredValueOnce) {
    publish(broker.port(), "settings/group/lobby/desired/captionsFontSize", R"({"value":"FONT_SMALL","version":1})",
            {"-r"});
    publish(broker.port(), "settings/tv/desired/captionsFontSize", R"({"value":"FONT_LARGE","version":2})", {"-r"});
    Subscriber subscriber(broker.port(), {"settings/tv/outcome", "settings/tv/availability"});
    RunningBridge bridge(host, broker.address(), "tv", {"--group", "lobby"});
    const std::string newest =
        outcome(R"("key":"captionsFontSize","outcome":"changed","value":"FONT_LARGE","version":2)");
    subscriber.await(newest);
    EXPECT_EQ(get("captionsFontSize"), "FONT_LARGE\n");
    // Somebody at the device wants it otherwise, also after a power cut.
    set("captionsFontSize", "FONT_MEDIUM");
    bridge.kill();
    subscriber.await("settings/tv/availability offline");
    bridge.start();
    subscriber.await("settings/tv/availability online");
    publish(broker.port(), "settings/tv/set/captionsStyles", "STYLE_BLACK_ON_WHITE");
    EXPECT_EQ(subscriber.next().rfind(R"(settings/tv/outcome {"key":"captionsStyles")", 0), 0U);
    EXPECT_EQ(get("captionsFontSize"), "FONT_MEDIUM\n");
    EXPECT_EQ(TestSupport::modeOf(bridge.stateFolder()), 0700U);
}

TEST_F(MqttProgram, ADesiredValueDoesNotOverwriteAChangeThatWasMadeMeanwhile) {
    Subscriber subscriber(broker.port(), {"settings/tv/outcome", "settings/tv/availability"});
    RunningBridge bridge(host, broker.address());
    subscriber.await("settings/tv/availability online");
    EXPECT_EQ(bridge.stop(), 0);
    subscriber.await("settings/tv/availability offline");
    publish(broker.port(), "settings/tv/desired/captionsFontSize", R"({"value":"FONT_LARGE","version":1})", {"-r"});
    publish(broker.port(), "settings/tv/desired/captionsStyles", R"({"value":"STYLE_BLACK_ON_WHITE","version":1})",
            {"-r"});
    set("captionsFontSize", "FONT_SMALL");
    bridge.start();
    std::set<std::string> outcomes{subscriber.await("settings/tv/outcome"), subscriber.await("settings/tv/outcome")};
    EXPECT_EQ(
        outcomes,
        (std::set<std::string>{
            outcome(
                R"("key":"captionsFontSize","outcome":"refused","reason":"changed-since","message":"the setting was changed at the device in the meantime","version":1)"),
            outcome(R"("key":"captionsStyles","outcome":"changed","value":"STYLE_BLACK_ON_WHITE","version":1)")}));
    EXPECT_EQ(get("captionsFontSize"), "FONT_SMALL\n");
    publish(broker.port(), "settings/tv/desired/captionsFontSize", R"({"value":"FONT_LARGE","version":2})", {"-r"});
    subscriber.await(outcome(R"("key":"captionsFontSize","outcome":"changed","value":"FONT_LARGE","version":2)"));
}

TEST_F(MqttProgram, AnswersManyCommandsInTheirOrder) {
    RunningBridge bridge(host, broker.address());
    Subscriber subscriber(broker.port(), {"settings/tv/outcome", "settings/tv/availability"});
    subscriber.await("settings/tv/availability online");
    // By one publisher, which keeps their order.
    constexpr int count = 300;
    TestSupport::ChildProcess publisher({"sh", "-c",
                                         "for n in $(seq " + std::to_string(count) +
                                             "); do echo '{\"value\":\"zone-'$n'\",\"id\":\"'$n'\"}'; done | "
                                             "mosquitto_pub -l -q 1 -h 127.0.0.1 -p " +
                                             broker.port() + " -t settings/tv/set/timezone"});
    for (int number = 1; number <= count; ++number) {
        const std::string text = std::to_string(number);
        std::string members = R"("key":"timezone","outcome":"changed","value":"zone-)";
        members.append(text).append(R"(","id":")").append(text).append(R"(")");
        ASSERT_EQ(subscriber.next(), outcome(members));
    }
}

TEST_F(MqttProgram, RefusesHostilePayloadsAndGoesOn) {
    RunningBridge bridge(host, broker.address());
    Subscriber subscriber(broker.port(), {"settings/tv/outcome", "settings/tv/availability"});
    subscriber.await("settings/tv/availability online");
    const std::string top = "settings/tv/set/timezone";
    const std::string bad = R"("key":"timezone","outcome":"refused","reason":"bad-payload","message":)";
    // Not even delivered.
    publish(broker.port(), top, std::string(2000000, 'a'));
    publish(broker.port(), top, std::string(70000, 'a'));
    EXPECT_EQ(
        subscriber.next(),
        outcome(
            R"("key":"timezone","outcome":"refused","reason":"too-large","message":"the payload has more than 65536 bytes")"));
    // Within the limit of the bridge, not within that of the host.
    publish(broker.port(), top, std::string(65536, '"'));
    EXPECT_EQ(
        subscriber.next().rfind(R"(settings/tv/outcome {"key":"timezone","outcome":"refused","reason":"too-large")", 0),
        0U);
    publish(broker.port(), top, "\xff\xfe");
    EXPECT_EQ(subscriber.next(), outcome(bad + R"("the payload is not UTF-8 text")"));
    publish(broker.port(), top, "{" + std::string(60000, '['));
    EXPECT_EQ(subscriber.next(), outcome(bad + R"("the payload is not a JSON object")"));
    publish(broker.port(), "settings/tv/set/no\xc3\xa4\"key", "x");
    EXPECT_EQ(subscriber.next(), outcome("\"key\":\"no\xc3\xa4\\\"key\",\"outcome\":\"refused\",\"reason\":\"unknown-"
                                         "key\",\"message\":\"there is no setting with this key\""));
    publish(broker.port(), "settings/tv/set/orliaLocale", R"("en-US")");
    EXPECT_NE(subscriber.next().find("wrong-form"), std::string::npos);
    publish(broker.port(), top, "Europe/Paris", {"-r"});
    EXPECT_EQ(subscriber.next(), outcome(R"("key":"timezone","outcome":"changed","value":"Europe/Paris")"));
}

TEST_F(MqttProgram, AppearsInHomeAssistantWithEachSettingThatIsNotPersonal) {
    Subscriber subscriber(broker.port(), {"homeassistant/#", "settings/tv/availability"});
    RunningBridge bridge(host, broker.address(), "tv", {"--home-assistant"});
    std::set<std::string> shown;
    for (const auto& message : subscriber.until("settings/tv/availability online")) {
        if (message.find("/config {") != std::string::npos) {
            shown.insert(message.substr(0, message.find("/config ")));
        }
    }
    const std::string top = "homeassistant/";
    EXPECT_EQ(shown,
              (std::set<std::string>{
                  top + "binary_sensor/settings-tv/captionsEnabled",
                  top + "binary_sensor/settings-tv/doNotDisturbEnabled", top + "select/settings-tv/captionsFontSize",
                  top + "select/settings-tv/captionsStyles", top + "switch/settings-tv/handsFreeAlwaysOnDiscovered",
                  top + "switch/settings-tv/handsFreeAlwaysOnEnabled", top + "switch/settings-tv/handsFreeEnabled",
                  top + "switch/settings-tv/pttAlwaysOnDiscovered", top + "switch/settings-tv/pttAlwaysOnEnabled",
                  top + "text/settings-tv/orliaLocale", top + "text/settings-tv/timezone"}));
}

TEST_F(MqttProgram, TellsTheServiceManagerAndTheDoctorHowItIs) {
    const TestSupport::TemporaryDirectory folder;
    TestSupport::NotificationSocket manager(folder / "notify");
    const auto awaitStatus = [&](const std::string& status) {
        for (std::optional<std::string> told; (told = manager.receive()) != "STATUS=" + status;) {
            ASSERT_TRUE(told) << status;
        }
    };
    const auto doctor = [this] {
        const std::string output = host.run({"doctor"}).output;
        const std::size_t place = output.rfind("settings-mqtt: ");
        return place == std::string::npos ? output : output.substr(place - 6);
    };
    ::setenv("NOTIFY_SOCKET", (folder / "notify").c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", host.runtimeFolder().c_str(), 1);
    RunningBridge bridge(host, broker.address());
    ::unsetenv("NOTIFY_SOCKET");
    ::unsetenv("XDG_RUNTIME_DIR");
    awaitStatus("connected to host and broker");
    EXPECT_EQ(doctor(), "ok    settings-mqtt: connected to host and broker\n");
    broker.kill();
    awaitStatus("waiting for the broker");
    EXPECT_EQ(doctor(), "wrong settings-mqtt: waiting for the broker: see its log\n");
    bridge.kill();
    EXPECT_EQ(doctor(), "wrong settings-mqtt: it has crashed: see its log, then start it\n");
}

}  // namespace SettingsMqttTest
