#include "HandlerFixture.h"

namespace SettingsHandlerTests {

class SetSettingsRequest : public HandlerTest {
protected:
    static std::string request(const std::string& timestamp, const std::string& payload) {
        return R"({"timestamp":)" + timestamp + R"(,"payload":)" + payload + "}";
    }

    void expectRefused(const std::string& text, const std::string& reason) {
        EXPECT_FALSE(handler->handleSetSettingRequest(text)) << text;
        expectJournal(
            (Entries{"log 1 SettingsHandler:Handling SetSettings request", "log 3 SettingsHandler:" + reason}));
    }

    void expectRefusedAfterOrdering(const std::string& text, const std::string& reason) {
        EXPECT_FALSE(handler->handleSetSettingRequest(text)) << text;
        expectJournal((Entries{"log 1 SettingsHandler:Handling SetSettings request",
                               "log 1 SettingsHandler:isRequestValid", "log 3 SettingsHandler:" + reason}));
    }

    static constexpr const char* stale =
        "Invalid Request: SettingsDBId is invalid or request is older than current request";
    static constexpr const char* noValue = "to value field in payload not found or has incorrect format";
};

TEST_F(SetSettingsRequest, WritesTheSetting) {
    EXPECT_TRUE(handler->handleSetSettingRequest(request("1000", R"({"settingDBId":"deviceName","to":"Den"})")));
    expectJournal(
        Entries({"log 1 SettingsHandler:Handling SetSettings request", "log 1 SettingsHandler:isRequestValid"}) +
        writeOf("deviceName") +
        Entries{"storage.setValue(deviceName, Den)", "log 1 SettingsHandler:deviceName new value: 'Den'"} +
        changed("deviceName", "", "Den"));
}

TEST_F(SetSettingsRequest, ReturnsTheResultOfTheWrite) {
    const std::string text = request("1", R"({"settingDBId":"deviceName","to":"Den"})");
    EXPECT_TRUE(handler->handleSetSettingRequest(text));
    EXPECT_FALSE(handler->handleSetSettingRequest(text)) << "unchanged";
}

TEST_F(SetSettingsRequest, RefusesATextThatIsNotJson) {
    for (const auto* text : {"", "{", "{} x", "{'a':1}", "{\"a\":1,}", "nonsense"}) {
        expectRefused(text, "Payload was not parsed successfully");
    }
}

TEST_F(SetSettingsRequest, RefusesAMissingOrWrongTimestampFirst) {
    const std::string payload = R"({"settingDBId":"deviceName","to":"Den"})";
    expectRefused(R"({"payload":)" + payload + "}", "SetSetting Message timestamp not found");
    expectRefused("{}", "SetSetting Message timestamp not found");
    for (const auto* wrong : {R"("123")", "1.0", "1e3", "9223372036854775808", "18446744073709551616",
                              "-9223372036854775809", "true", "null", "{}", "[1]"}) {
        expectRefused(request(wrong, payload), "SetSetting Message timestamp not found");
    }
    EXPECT_TRUE(storage.values.empty());
}

TEST_F(SetSettingsRequest, TakesTimestampsToTheLimits) {
    EXPECT_TRUE(
        handler->handleSetSettingRequest(request("-9223372036854775808", R"({"settingDBId":"deviceName","to":"a"})")));
    EXPECT_TRUE(handler->handleSetSettingRequest(request("-0", R"({"settingDBId":"deviceName","to":"b"})")));
    EXPECT_TRUE(
        handler->handleSetSettingRequest(request("9223372036854775807", R"({"settingDBId":"deviceName","to":"c"})")));
    EXPECT_FALSE(
        handler->handleSetSettingRequest(request("9223372036854775806", R"({"settingDBId":"deviceName","to":"d"})")));
}

TEST_F(SetSettingsRequest, RefusesAMissingOrWrongPayload) {
    expectRefused(R"({"timestamp":1})", "SetSetting Message payload not found");
    for (const auto* wrong : {"null", "[]", R"("x")", "1"}) {
        expectRefused(request("1", wrong), "SetSetting Message payload not found");
    }
}

TEST_F(SetSettingsRequest, RefusesAMissingOrWrongKey) {
    const std::string reason = "SetSetting settingId not found in payload or has incorrect format";
    expectRefused(request("1", "{}"), reason);
    expectRefused(request("1", R"({"settingDBId":1,"to":"x"})"), reason);
    expectRefused(request("1", R"({"to":"x"})"), reason);
}

TEST_F(SetSettingsRequest, RefusesAnOlderRequestBeforeLookingAtTheValue) {
    EXPECT_TRUE(handler->handleSetSettingRequest(request("100", R"({"settingDBId":"deviceName","to":"Den"})")));
    journal.take();
    expectRefusedAfterOrdering(request("99", R"({"settingDBId":"deviceName"})"), stale);
}

TEST_F(SetSettingsRequest, AMissingValueStillRecordsTheTime) {
    for (const auto* payload :
         {R"({"settingDBId":"deviceName","to":true})", R"({"settingDBId":"deviceName"})",
          R"({"settingDBId":"deviceName","to":5})", R"({"settingDBId":"deviceName","to":null})"}) {
        expectRefusedAfterOrdering(request("100", payload), noValue);
    }
    expectRefusedAfterOrdering(request("99", R"({"settingDBId":"deviceName","to":"Den"})"), stale);
}

TEST_F(SetSettingsRequest, ARefusedWriteStillRecordsTheTime) {
    EXPECT_FALSE(handler->handleSetSettingRequest(request("100", R"({"settingDBId":"captionsEnabled","to":"true"})")));
    journal.take();
    expectRefusedAfterOrdering(request("99", R"({"settingDBId":"captionsEnabled","to":"true"})"), stale);
}

TEST_F(SetSettingsRequest, EqualTimestampsAreBothApplied) {
    EXPECT_TRUE(handler->handleSetSettingRequest(request("5", R"({"settingDBId":"deviceName","to":"a"})")));
    EXPECT_TRUE(handler->handleSetSettingRequest(request("5", R"({"settingDBId":"deviceName","to":"b"})")));
    EXPECT_EQ(storage.values.at("deviceName"), "b");
}

TEST_F(SetSettingsRequest, AnUnknownKeyIsStored) {
    EXPECT_TRUE(handler->handleSetSettingRequest(request("5", R"({"settingDBId":"nobody's","to":"x"})")));
    EXPECT_EQ(storage.values, (Values{{"nobody's", "x"}}));
}

TEST_F(SetSettingsRequest, IgnoresOtherMembersAndTheMessageId) {
    EXPECT_TRUE(handler->handleSetSettingRequest(
        R"({"messageId":7,"timestamp":1,"extra":[],"payload":{"from":1,"settingDBId":"deviceName","x":{},"to":"Den"}})"));
}

TEST_F(SetSettingsRequest, CallsTheRuleAndTheWriteThroughTheInterface) {
    struct Derived : OpenHandler {
        using OpenHandler::OpenHandler;
        Entries calls;
        bool allow = false;
        bool isRequestValid(std::string& key, long timestamp) override {
            calls.push_back("isRequestValid " + key + " " + std::to_string(timestamp));
            return allow;
        }
        bool setSetting(const std::string& key, const std::string& value) override {
            calls.push_back("setSetting " + key + " " + value);
            return true;
        }
    };
    const auto derived = make<Derived>();
    const std::string text = request("7", R"({"settingDBId":"k","to":"v"})");
    EXPECT_FALSE(derived->handleSetSettingRequest(text));
    derived->allow = true;
    EXPECT_TRUE(derived->handleSetSettingRequest(text));
    EXPECT_EQ(derived->calls, (Entries{"isRequestValid k 7", "isRequestValid k 7", "setSetting k v"}));
}

TEST(SetSettingsRequestEnvelope, ReadsTheNamesThatTheTransportCarries) {
    SettingsHandlerTesting::Journal journal;
    const auto transport = std::make_shared<SettingsHandlerTesting::FakeTransport>(journal, "id", "time", "body");
    SettingsHandlerTesting::FakeStorage storage(journal);
    const auto handler = SettingsHandler::SettingsHandler::create(
        transport, storage, std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal),
        std::make_shared<SettingsHandlerTesting::FakeSdkBridge>(journal),
        std::make_shared<SettingsHandlerTesting::FakeAppLaunch>(journal),
        std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal));
    EXPECT_TRUE(handler->handleSetSettingRequest(R"({"time":1,"body":{"settingDBId":"deviceName","to":"Den"}})"));
    EXPECT_FALSE(
        handler->handleSetSettingRequest(R"({"timestamp":1,"payload":{"settingDBId":"deviceName","to":"x"}})"));
    journal.take();
    handler->handleGetSettingsRequest(R"({"id":"a","body":{"settings":["deviceName"]}})");
    handler->handleIsOrliaSelectedVARequest(R"({"id":"b"})");
    const auto entries = journal.take();
    EXPECT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[1], R"(transport.sendResponse(a, {"settings":{"deviceName":"Den"}}))");
    EXPECT_EQ(entries[2], R"(transport.sendResponse(b, {"isOrliaSelectedAsVA":true}))");
}

}  // namespace SettingsHandlerTests
