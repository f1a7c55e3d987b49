#include "HandlerFixture.h"

namespace SettingsHandlerTests {

class BadInput : public HandlerTest {
protected:
    static std::string setRequest(const std::string& valueJson) {
        return R"({"timestamp":1,"payload":{"settingDBId":"deviceName","to":)" + valueJson + "}}";
    }
};

TEST_F(BadInput, ARootThatIsNotAnObjectHasNoMembers) {
    for (const auto* text : {"[]", "[1,2]", "1", "1.5", R"("messageId")", "null", "true", " [ {} ] "}) {
        EXPECT_FALSE(handler->handleSetSettingRequest(text)) << text;
        handler->handleGetSettingsRequest(text);
        handler->handleIsOrliaSelectedVARequest(text);
        expectJournal((Entries{"log 1 SettingsHandler:Handling SetSettings request",
                               "log 3 SettingsHandler:SetSetting Message timestamp not found",
                               "log 1 SettingsHandler:Handling GetSettings request",
                               "log 3 SettingsHandler:GetSettings Message Id not found or has incorrect format",
                               "log 3 SettingsHandler:Message ID not found"}));
    }
}

// One text for each type of request, too deep for any stack. Takes seconds in a debug build.
TEST_F(BadInput, MillionsOfNestedArraysAreHandled) {
    constexpr std::size_t depth = NESTING_DEPTH;
    const std::string open(depth, '[');
    const std::string nested = open + std::string(depth, ']');

    EXPECT_FALSE(handler->handleSetSettingRequest(nested));
    expectJournal((Entries{"log 1 SettingsHandler:Handling SetSettings request",
                           "log 3 SettingsHandler:SetSetting Message timestamp not found"}));
    handler->handleIsOrliaSelectedVARequest(open);
    expectJournal(Entries{"log 3 SettingsHandler:Message ID not found"});
    EXPECT_FALSE(handler->setSetting("orliaLocale", nested));
    expectJournal(writeOf("orliaLocale") +
                  Entries{"log 3 SettingsHandler:orliaLocale is empty or not in the correct format"});
    EXPECT_FALSE(handler->setSetting("orliaLocale", open));
    expectJournal(writeOf("orliaLocale") + Entries{"log 3 SettingsHandler:orliaLocale is not in the proper format"});
    // The only element of the list is not a string, so this asks for all settings.
    handler->handleGetSettingsRequest(R"({"messageId":"m","payload":{"settings":)" + nested + "}}");
    auto entries = journal.take();
    ASSERT_FALSE(entries.empty());
    EXPECT_EQ(entries.back().rfind("transport.sendResponse(m, {", 0), 0U);
    entries.pop_back();
    EXPECT_EQ(entries, Entries{"log 1 SettingsHandler:Handling GetSettings request"} + readOfAll());
}

TEST_F(BadInput, DeeplyNestedUnknownMembersAreIgnored) {
    constexpr std::size_t depth = 200000;
    std::string nested;
    for (std::size_t level = 0; level < depth; ++level) {
        nested += R"({"a":)";
    }
    nested += "1" + std::string(depth, '}');
    EXPECT_TRUE(handler->handleSetSettingRequest(R"({"x":)" + nested + R"(,"timestamp":1,"payload":{"y":)" + nested +
                                                 R"(,"settingDBId":"deviceName","to":"Den"}})"));
    EXPECT_EQ(storage.values, (Values{{"deviceName", "Den"}}));
}

TEST_F(BadInput, ANulEndsTheText) {
    const std::string request = setRequest(R"("Den")");
    EXPECT_TRUE(handler->handleSetSettingRequest(request + std::string("\0 nonsense {", 12)));
    EXPECT_FALSE(handler->handleSetSettingRequest(std::string("\0", 1) + request));
    EXPECT_FALSE(handler->handleSetSettingRequest(request.substr(0, 20) + std::string(1, '\0') + request.substr(20)));
    EXPECT_TRUE(handler->setSetting("orliaLocale", std::string("[\"fr-FR\"]\0garbage", 17)));
    EXPECT_EQ(sdk->locales, Entries{"fr-FR"});
}

TEST_F(BadInput, AnEscapedNulIsKeptWholeEverywhere) {
    const std::string value("a\0b", 3);
    EXPECT_TRUE(handler->handleSetSettingRequest(setRequest(R"("a\u0000b")")));
    EXPECT_EQ(storage.values.at("deviceName"), value);
    EXPECT_EQ(cached("deviceName"), value);
    EXPECT_FALSE(handler->setSetting("deviceName", value));
    journal.take();
    EXPECT_TRUE(handler->setSetting("deviceName", "x"));
    EXPECT_TRUE(handler->setSetting("deviceName", value));
    const auto entries = journal.take();
    const auto size = entries.size();
    EXPECT_EQ(entries[size - 3],
              R"(transport.sendMessage(25, {"settingDBId":"deviceName","from":"x","to":"a\u0000b"}))");
    EXPECT_EQ(entries[size - 2], "metrics.recordCounter(deviceName_" + value + ", 0, 1, 1)");
    EXPECT_EQ(entries[size - 1], "metrics.recordEvent(app_events, AUTO, interaction_name=deviceName_" + value + ")");
    // A log line takes C strings, so it ends at the NUL.
    EXPECT_EQ(entries[size - 4], "log 1 SettingsHandler:deviceName new value: 'a'");
    handler->handleGetSettingsRequest(R"({"messageId":"m\u0000n","payload":{"settings":["deviceName"]}})");
    EXPECT_EQ(journal.take().back(),
              "transport.sendResponse(" + std::string("m\0n", 3) + R"(, {"settings":{"deviceName":"a\u0000b"}}))");
}

TEST_F(BadInput, AKeyWithAnEscapedNulIsAnotherKey) {
    EXPECT_TRUE(
        handler->handleSetSettingRequest(R"({"timestamp":1,"payload":{"settingDBId":"deviceName\u0000","to":"x"}})"));
    EXPECT_EQ(storage.values, (Values{{std::string("deviceName\0", 11), "x"}}));
}

TEST_F(BadInput, TheFirstOfDuplicateMembersCounts) {
    EXPECT_TRUE(handler->handleSetSettingRequest(
        R"({"timestamp":5,"timestamp":"x","payload":{"settingDBId":"deviceName","settingDBId":1,"to":"first","to":"second"},)"
        R"("payload":{"settingDBId":"friendlyName","to":"x"}})"));
    EXPECT_EQ(storage.values, (Values{{"deviceName", "first"}}));
    EXPECT_FALSE(handler->handleSetSettingRequest(
        R"({"timestamp":"x","timestamp":5,"payload":{"settingDBId":"deviceName","to":"third"}})"));
    handler->handleIsOrliaSelectedVARequest(R"({"messageId":"first","messageId":7})");
    EXPECT_EQ(journal.take().back(), R"(transport.sendResponse(first, {"isOrliaSelectedAsVA":true}))");
    handler->handleGetSettingsRequest(
        R"({"messageId":"m","payload":{"settings":["deviceName"],"settings":["timezone"]}})");
    EXPECT_EQ(journal.take().back(), R"(transport.sendResponse(m, {"settings":{"deviceName":"first"}}))");
}

TEST_F(BadInput, TextsMakeTheRoundTripExactly) {
    const std::vector<std::pair<std::string, std::string>> texts{
        {R"("quote \" backslash \\ slash \/")", "quote \" backslash \\ slash /"},
        {R"("\b\f\n\r\t")", "\b\f\n\r\t"},
        {R"("caf\u00e9 \u4e2d \ud83d\ude00")", "café 中 😀"},
        {"\"raw café 中 😀\"", "raw café 中 😀"},
        {"\"\x7f\xc2\x80\"", "\x7f\xc2\x80"},
        {"\"bytes \xff\xfe\"", "bytes \xff\xfe"},
        {R"("%s %n %d")", "%s %n %d"},
        {R"("' -> '")", "' -> '"},
    };
    for (const auto& [json, value] : texts) {
        EXPECT_TRUE(handler->handleSetSettingRequest(setRequest(json))) << json;
        EXPECT_EQ(storage.values.at("deviceName"), value) << json;
        journal.take();
        handler->handleGetSettingsRequest(R"({"messageId":"m","payload":{"settings":["deviceName"]}})");
        std::string reply = journal.take().back();
        const std::string begin = R"(transport.sendResponse(m, {"settings":{"deviceName":)";
        ASSERT_EQ(reply.substr(0, begin.size()), begin);
        rapidjson::Document back;
        back.Parse(reply.substr(begin.size(), reply.size() - begin.size() - 3).c_str());
        ASSERT_TRUE(back.IsString()) << reply;
        EXPECT_EQ(std::string(back.GetString(), back.GetStringLength()), value) << json;
    }
}

TEST_F(BadInput, AValueOfOneMegabyteIsStored) {
    const std::string value(1000000, 'v');
    EXPECT_TRUE(handler->handleSetSettingRequest(setRequest("\"" + value + "\"")));
    EXPECT_EQ(storage.values.at("deviceName"), value);
}

}  // namespace SettingsHandlerTests
