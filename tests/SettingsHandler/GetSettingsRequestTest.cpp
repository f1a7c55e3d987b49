#include "HandlerFixture.h"

namespace SettingsHandlerTests {

class GetSettingsRequest : public HandlerTest {
protected:
    void expectRefused(const std::string& text, const std::string& reason) {
        handler->handleGetSettingsRequest(text);
        expectJournal(
            (Entries{"log 1 SettingsHandler:Handling GetSettings request", "log 3 SettingsHandler:" + reason}));
    }

    static std::string quoted(const std::string& text) {
        return SettingsHandlerTesting::jsonText(rapidjson::Value(rapidjson::StringRef(text)));
    }

    /// The journal entry of the reply to a request of `settings`.
    std::string replyTo(const std::string& settings) {
        handler->handleGetSettingsRequest(R"({"messageId":"m","payload":{"settings":)" + settings + "}}");
        return journal.take().back();
    }
};

TEST_F(GetSettingsRequest, RepliesWithTheValuesOrderedByKey) {
    handler->handleGetSettingsRequest(R"({"messageId":"m1","payload":{"settings":["timezone","captionsEnabled"]}})");
    expectJournal((Entries{
        "log 1 SettingsHandler:Handling GetSettings request", "log 0 SettingsHandler:getSettings",
        "log 0 SettingsHandler:SettingDBId: timezone", "sdk.getTimezone()",
        "log 0 SettingsHandler:SettingDBId: captionsEnabled", "sdk.isCaptionsEnabled()",
        R"(transport.sendResponse(m1, {"settings":{"captionsEnabled":"false","timezone":"America/Vancouver"}}))"}));
}

TEST_F(GetSettingsRequest, RefusesATextThatIsNotJson) {
    expectRefused("{", "Payload was not parsed successfully");
    expectRefused("", "Payload was not parsed successfully");
}

TEST_F(GetSettingsRequest, RefusesAMissingOrWrongMessageId) {
    const std::string reason = "GetSettings Message Id not found or has incorrect format";
    expectRefused(R"({"payload":{"settings":[]}})", reason);
    expectRefused(R"({"messageId":5,"payload":{"settings":[]}})", reason);
    expectRefused("{}", reason);
}

TEST_F(GetSettingsRequest, RefusesAMissingPayloadWithTheTextOfSetSettings) {
    expectRefused(R"({"messageId":"m"})", "SetSetting Message payload not found");
    expectRefused(R"({"messageId":"m","payload":[]})", "SetSetting Message payload not found");
}

TEST_F(GetSettingsRequest, RefusesAMissingOrWrongList) {
    const std::string reason = "GetSettings settings field not found in payload or has incorrect format";
    expectRefused(R"({"messageId":"m","payload":{}})", reason);
    expectRefused(R"({"messageId":"m","payload":{"settings":{}}})", reason);
    expectRefused(R"({"messageId":"m","payload":{"settings":"deviceName"}})", reason);
}

TEST_F(GetSettingsRequest, SkipsElementsThatAreNotStrings) {
    EXPECT_EQ(replyTo(R"([5,null,"deviceName",["x"],{}])"),
              R"(transport.sendResponse(m, {"settings":{"deviceName":"TV"}}))");
}

TEST_F(GetSettingsRequest, AListWithoutStringsAsksForEverything) {
    EXPECT_EQ(replyTo("[5]"), replyTo("[]"));
}

TEST_F(GetSettingsRequest, DuplicatesGiveOneMember) {
    EXPECT_EQ(replyTo(R"(["timezone","timezone"])"),
              R"(transport.sendResponse(m, {"settings":{"timezone":"America/Vancouver"}}))");
}

TEST_F(GetSettingsRequest, AnEmptyListReturnsAllSettingsWithAValue) {
    std::string members;
    for (const auto& [key, value] : initialValues()) {
        members += (members.empty() ? "" : ",") + quoted(key) + ":" + quoted(value);
    }
    EXPECT_EQ(replyTo("[]"), R"(transport.sendResponse(m, {"settings":{)" + members + "}})");
}

TEST_F(GetSettingsRequest, RepliesAlsoWhenNoKeyHasAValue) {
    EXPECT_EQ(replyTo(R"(["unknown"])"), R"(transport.sendResponse(m, {"settings":{}}))");
}

TEST_F(GetSettingsRequest, AsksThroughTheInterfaceForTheStringsInTheirOrder) {
    struct Derived : OpenHandler {
        using OpenHandler::OpenHandler;
        Entries asked;
        std::map<std::string, std::string> getSettings(const std::vector<std::string>& names) override {
            asked = names;
            return {{"b", "2"}, {"a", "1"}};
        }
    };
    const auto derived = make<Derived>();
    journal.take();
    derived->handleGetSettingsRequest(R"({"messageId":"m","payload":{"settings":["x",5,"","timezone","x"]}})");
    EXPECT_EQ(derived->asked, (Entries{"x", "", "timezone", "x"}));
    expectJournal((Entries{"log 1 SettingsHandler:Handling GetSettings request",
                           R"(transport.sendResponse(m, {"settings":{"a":"1","b":"2"}}))"}));
}

}  // namespace SettingsHandlerTests
