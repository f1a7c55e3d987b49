#include <gtest/gtest.h>

#include "CommunicationHandler/MessageType.h"
#include "Wire/Requests.h"
#include "wire/Examples.h"

using namespace Wire;

namespace {

std::string frameOf(const std::string& example, std::size_t step) {
    return WireTests::exampleNamed(example).steps.at(step).frame;
}

}  // namespace

// The library declares the types, too, and does not know the wire.
static_assert(static_cast<int>(GET_SETTINGS) == CommunicationHandler::GET_SETTINGS);
static_assert(static_cast<int>(IS_ORLIA_SELECTED_VA) == CommunicationHandler::IS_ORLIA_SELECTED_VA);
static_assert(static_cast<int>(OPEN_VA_SETTINGS) == CommunicationHandler::OPEN_VA_SETTINGS);
static_assert(static_cast<int>(LOG_OUT) == CommunicationHandler::LOG_OUT);
static_assert(static_cast<int>(SET_SETTINGS) == CommunicationHandler::SET_SETTINGS);
static_assert(static_cast<int>(SETTING_CHANGED) == CommunicationHandler::SETTING_CHANGED);

TEST(Requests, RequestSettings) {
    EXPECT_EQ(getSettingsRequest("m1", {}), "{\"type\":7,\"messageId\":\"m1\",\"payload\":{\"settings\":[]}}");
    EXPECT_EQ(getSettingsRequest("m1", {"b", "a", "b"}),
              "{\"type\":7,\"messageId\":\"m1\",\"payload\":{\"settings\":[\"b\",\"a\",\"b\"]}}");
}

TEST(Requests, CarryAnyValueOnOneLine) {
    EXPECT_EQ(setSettingsRequest("m1", 1700000000000, "k", "a\n\"\x1b"),
              "{\"type\":24,\"messageId\":\"m1\",\"timestamp\":1700000000000,"
              "\"payload\":{\"settingDBId\":\"k\",\"to\":\"a\\n\\\"\\u001B\"}}");
}

TEST(Requests, HaveNoPayloadForTheOtherTypes) {
    EXPECT_EQ(bareRequest(IS_ORLIA_SELECTED_VA, "m1"), "{\"type\":18,\"messageId\":\"m1\"}");
    EXPECT_EQ(bareRequest(OPEN_VA_SETTINGS, "m2"), "{\"type\":19,\"messageId\":\"m2\"}");
    EXPECT_EQ(bareRequest(LOG_OUT, "m3"), "{\"type\":22,\"messageId\":\"m3\"}");
}

TEST(Requests, MayAskForAnAnswer) {
    EXPECT_EQ(setSettingsRequest("m1", 5, "k", "v", Answered::YES),
              R"({"type":24,"messageId":"m1","timestamp":5,"answer":true,"payload":{"settingDBId":"k","to":"v"}})");
    EXPECT_EQ(bareRequest(LOG_OUT, "m2", Answered::YES), R"({"type":22,"messageId":"m2","answer":true})");
}

TEST(Requests, MakeABatch) {
    EXPECT_EQ(batchFrame({}), R"({"batch":[]})");
    EXPECT_EQ(batchFrame({"{\"a\":1}", "{}"}), R"({"batch":[{"a":1},{}]})");
}

TEST(Requests, AskWithoutAType) {
    EXPECT_EQ(helloFrame("h1", "remote", std::nullopt), R"({"messageId":"h1","hello":{"client":"remote"}})");
    EXPECT_EQ(helloFrame("h1", "remote", LastEvent{"r", 17}),
              R"({"messageId":"h1","hello":{"client":"remote","resume":{"run":"r","sequence":17}}})");
    EXPECT_EQ(historyFrame("y1", "", std::nullopt), R"({"messageId":"y1","history":{}})");
    EXPECT_EQ(historyFrame("y1", "k", 20), R"({"messageId":"y1","history":{"settingDBId":"k","limit":20}})");
    EXPECT_EQ(queryFrame("c1", "catalogue"), R"({"messageId":"c1","catalogue":{}})");
    EXPECT_EQ(newPageKeyFrame("a1"), R"({"messageId":"a1","page":{"newKey":true}})");
}

TEST(Requests, AreThoseOfTheExamples) {
    EXPECT_EQ(getSettingsRequest("m1", {"timezone", "captionsEnabled", "noSuchKey"}), frameOf("get-settings", 0));
    EXPECT_EQ(getSettingsRequest("m2", {}), frameOf("get-settings", 2));
    EXPECT_EQ(bareRequest(IS_ORLIA_SELECTED_VA, "m11"), frameOf("assistant", 0));
}
