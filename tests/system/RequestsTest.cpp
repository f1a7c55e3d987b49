#include "HostFixture.h"

namespace SystemTests {

using HostRequests = HostTest;

TEST_F(HostRequests, AWriterReceivesItsEventBeforeTheReplyToItsNextRequest) {
    start();
    client().send(setRequest("deviceName", "\"Living room\"") + "\n" + getRequest(R"(["deviceName"])") + "\n");
    const auto event = parsed(client().receiveLine().value());
    EXPECT_EQ(event["type"].GetInt(), 25);
    EXPECT_EQ(event["sequence"].GetInt(), 1);
    EXPECT_STREQ(event["origin"].GetString(), "socket");
    EXPECT_STREQ(event["payload"]["settingDBId"].GetString(), "deviceName");
    EXPECT_STREQ(event["payload"]["from"].GetString(), "TV");
    EXPECT_STREQ(event["payload"]["to"].GetString(), "Living room");
    EXPECT_EQ(client().receiveLine(),
              R"({"type":7,"messageId":"g","payload":{"settings":{"deviceName":"Living room"}}})");
}

TEST_F(HostRequests, EveryClientSeesEveryEventInOneUnbrokenSequence) {
    start();
    WireTests::HostClient watcher(socket());
    // A reply shows that the host has accepted the watcher.
    watcher.sendLine(getRequest("[]"));
    ASSERT_TRUE(watcher.receiveLine());
    for (int number = 1; number <= 50; ++number) {
        client().sendLine(setRequest("deviceName", "\"name " + std::to_string(number) + "\""));
    }
    std::string lastId;
    for (int number = 1; number <= 50; ++number) {
        const auto event = parsed(watcher.receiveLine().value());
        EXPECT_EQ(event["sequence"].GetInt(), number);
        EXPECT_EQ(event["payload"]["to"].GetString(), "name " + std::to_string(number));
        EXPECT_NE(event["messageId"].GetString(), lastId);
        lastId = event["messageId"].GetString();
    }
}

TEST_F(HostRequests, AnUnchangedValueMakesNoEvent) {
    start();
    EXPECT_EQ(set("deviceName", "\"Den\"").size(), 1U);
    EXPECT_EQ(set("deviceName", "\"Den\"").size(), 0U);
}

TEST_F(HostRequests, RefusesInvalidFramesAndTheConnectionStaysUsable) {
    start();
    const std::vector<std::pair<std::string, std::string>> refusals{
        {"nonsense", "not-json"},
        {"{\"type\":7,\"x\":\"\xff\"}", "not-json"},
        {R"({"type":7,"x":"\ud800"})", "not-json"},
        {std::string("{\"type\":7}\0", 11), "not-json"},
        {"[]", "not-an-object"},
        {R"({"type":1})", "unknown-type"},
        {R"({"messageId":"m"})", "unknown-type"},
        {R"({"type":7,"x":)" + std::string(32, '[') + std::string(32, ']') + "}", "too-deep"},
        {std::string(65537, 'x'), "too-large"},
        {std::string(3000000, '['), "too-large"}};
    for (const auto& [frame, code] : refusals) {
        EXPECT_EQ(ask(frame)["error"]["code"].GetString(), code) << frame.substr(0, 100);
        EXPECT_EQ(get("deviceName"), "TV");
    }
}

TEST_F(HostRequests, ReportsTheAssistantAsSelectedAndOpensItsSettings) {
    start();
    EXPECT_TRUE(ask(R"({"type":18,"messageId":"a"})")["payload"]["isOrliaSelectedAsVA"].GetBool());
    client().sendLine(R"({"type":19})");
    ask(R"({"type":18,"messageId":"b"})");
    EXPECT_TRUE(contains(device(R"({"command":"show"})"), R"("lastLaunchedApp":"voice-assistant-settings")"));
}

TEST_F(HostRequests, ValuesOfTheSimulationAreReadBackImmediatelyAndAfterARestart) {
    start();
    const std::vector<std::pair<std::string, std::string>> values{{"orliaLocale", R"("[\"fr-FR\",\"en-US\"]")"},
                                                                  {"timezone", "\"Europe/Paris\""},
                                                                  {"friendlyName", "\"Den\""},
                                                                  {"handsFreeEnabled", "\"true\""},
                                                                  {"handsFreeAlwaysOnEnabled", "\"true\""},
                                                                  {"pttAlwaysOnEnabled", "\"true\""},
                                                                  {"companionDevice", R"("[\"a\",\"b\"]")"},
                                                                  {"tovanEntitlementStatus", "\"active\""},
                                                                  {"my own key", R"("a\u0000b")"}};
    for (const auto& [key, json] : values) {
        client().sendLine(setRequest(key, json));
    }
    ask(getRequest("[]"));
    EXPECT_EQ(device(R"({"command":"captions","enabled":true})"), R"({"ok":true})");
    EXPECT_EQ(device(R"({"command":"doNotDisturb","enabled":true})"), R"({"ok":true})");
    for (const bool restarted : {false, true}) {
        if (restarted) {
            disconnect();
            stop();
            start();
        }
        for (const auto& [key, json] : values) {
            const auto expected = parsed(json);
            const auto reply = ask(getRequest("[\"" + key + "\"]"));
            const auto& value = reply["payload"]["settings"][key.c_str()];
            EXPECT_TRUE(value == expected) << key << " " << value.GetString();
        }
        EXPECT_EQ(get("captionsEnabled"), "true");
        EXPECT_EQ(get("doNotDisturbEnabled"), "true");
    }
}

TEST_F(HostRequests, ALogOutClearsTheSettingsAndKeepsTheStateOfTheDevice) {
    start();
    client().send(setRequest("deviceName", "\"Den\"") + "\n" + setRequest("friendlyName", "\"Den\"") + "\n" +
                  setRequest("handsFreeEnabled", "\"true\"") + "\n" + setRequest("timezone", "\"Europe/Paris\"") +
                  "\n");
    ask(getRequest("[]"));
    client().sendLine(R"({"type":22})");
    EXPECT_EQ(client().receiveLine(), R"({"notice":{"reread":["deviceName","friendlyName","handsFreeEnabled"]}})");
    EXPECT_EQ(get("deviceName"), "TV");
    EXPECT_EQ(get("friendlyName"), "TV");
    EXPECT_EQ(get("handsFreeEnabled"), "false");
    EXPECT_EQ(get("timezone"), "Europe/Paris");
}

TEST_F(HostRequests, ChangesAtTheDeviceAreEventsOrNotices) {
    start();
    client();
    ask(getRequest("[]"));
    EXPECT_EQ(device(R"({"command":"locale","value":"fr-FR"})"), R"({"ok":true})");
    EXPECT_EQ(client().receiveLine(), R"({"notice":{"reread":["orliaLocale"]}})");
    EXPECT_EQ(device(R"({"command":"timezone","value":"Europe/Paris"})"), R"({"ok":true})");
    EXPECT_EQ(client().receiveLine(), R"({"notice":{"reread":["timezone"]}})");
    EXPECT_EQ(device(R"({"command":"captions","enabled":true})"), R"({"ok":true})");
    EXPECT_EQ(client().receiveLine(), R"({"notice":{"reread":["captionsEnabled"]}})");
    for (const auto* command :
         {R"({"command":"handsfree","enabled":true})", R"({"command":"setting","key":"deviceName","value":"Den"})"}) {
        EXPECT_EQ(device(command), R"({"ok":true})");
        const auto event = parsed(client().receiveLine().value());
        EXPECT_EQ(event["type"].GetInt(), 25);
        EXPECT_STREQ(event["origin"].GetString(), "device");
    }
    // No other frame was sent, and none is sent for an unchanged value.
    EXPECT_EQ(device(R"({"command":"captions","enabled":true})"), R"({"ok":true})");
    Lines others;
    ask(getRequest("[]"), &others);
    EXPECT_EQ(others, Lines{});
    EXPECT_EQ(get("handsFreeEnabled"), "true");
    EXPECT_EQ(get("orliaLocale"), R"(["fr-FR"])");
}

TEST_F(HostRequests, TheObserversOfTheHostLogTheirNotifications) {
    start();
    client().send(setRequest("orliaLocale", R"("[\"fr-FR\"]")") + "\n" + setRequest("friendlyName", "\"Den\"") + "\n" +
                  setRequest("tovanEntitlementStatus", "\"active\"") + "\n");
    ask(getRequest("[]"));
    const std::string log = stop();
    EXPECT_TRUE(contains(log, "settings-host:the assistant locale is now 'fr-FR'")) << log;
    EXPECT_TRUE(contains(log, "settings-host:the friendly name was changed"));
    EXPECT_TRUE(contains(log, "settings-host:the entitlement status is now 'active'"));
}

TEST_F(HostRequests, ValuesOverTheLimitsAreRefusedWithTheReasonInTheLog) {
    start();
    const std::string longKey(257, 'k');
    set(longKey, "\"v\"");
    EXPECT_EQ(get(longKey), "(none)");
    EXPECT_TRUE(contains(stop(), "the key is longer than 256 bytes"));
}

TEST_F(HostRequests, InvalidBytesInTheDatabaseAreSentAsValidText) {
    start();
    stop();
    sql("INSERT INTO settings VALUES ('deviceName', x'41ff42')");
    start();
    client().sendLine(getRequest(R"(["deviceName"])"));
    EXPECT_EQ(client().receiveLine(),
              "{\"type\":7,\"messageId\":\"g\",\"payload\":{\"settings\":{\"deviceName\":\"A\xEF\xBF\xBD"
              "B\"}}}");
}

}  // namespace SystemTests
