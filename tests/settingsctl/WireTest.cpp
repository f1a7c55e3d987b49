#include <gtest/gtest.h>

#include "Failure.h"
#include "Wire.h"
#include "wire/Examples.h"

using namespace SettingsCtl;

namespace {

/// The failure that `action` throws.
template <typename Action>
std::pair<ExitStatus, std::string> failureOf(const Action& action) {
    try {
        action();
    } catch (const Failure& failure) {
        return {failure.exitStatus(), failure.what()};
    }
    return {DONE, "nothing was thrown"};
}

const std::pair<ExitStatus, std::string> noJsonObject{UNREACHABLE,
                                                      "unexpected response: not a settings-host (not a JSON object)"};
const std::pair<ExitStatus, std::string> notUnderstood{UNREACHABLE,
                                                       "unexpected response: not a settings-host (malformed frame)"};

}  // namespace

TEST(SettingsCtlRequests, RequestSettings) {
    EXPECT_EQ(getSettingsRequest("m1", {}), "{\"type\":7,\"messageId\":\"m1\",\"payload\":{\"settings\":[]}}\n");
    EXPECT_EQ(getSettingsRequest("m1", {"b", "a", "b"}),
              "{\"type\":7,\"messageId\":\"m1\",\"payload\":{\"settings\":[\"b\",\"a\",\"b\"]}}\n");
}

TEST(SettingsCtlRequests, CarryAnyValueOnOneLine) {
    EXPECT_EQ(setSettingsRequest("m1", 1700000000000, "k", "a\n\"\x1b"),
              "{\"type\":24,\"messageId\":\"m1\",\"timestamp\":1700000000000,"
              "\"payload\":{\"settingDBId\":\"k\",\"to\":\"a\\n\\\"\\u001B\"}}\n");
}

TEST(SettingsCtlRequests, HaveNoPayloadForTheOtherTypes) {
    EXPECT_EQ(bareRequest(IS_SELECTED, "m1"), "{\"type\":18,\"messageId\":\"m1\"}\n");
    EXPECT_EQ(bareRequest(OPEN_SETTINGS, "m2"), "{\"type\":19,\"messageId\":\"m2\"}\n");
    EXPECT_EQ(bareRequest(LOG_OUT, "m3"), "{\"type\":22,\"messageId\":\"m3\"}\n");
}

TEST(SettingsCtlRequests, CarryValidUtf8Only) {
    EXPECT_TRUE(isValidUtf8(""));
    EXPECT_TRUE(
        isValidUtf8("K\xc3\xbc"
                    "che \xf0\x9f\x93\xba"));
    EXPECT_FALSE(isValidUtf8("\xff"));
    EXPECT_FALSE(isValidUtf8("a\xc3"));
    EXPECT_FALSE(isValidUtf8("\xed\xa0\x80"));
    EXPECT_FALSE(isValidUtf8("\xc0\x80"));
}

TEST(SettingsCtlFrames, MustBeJsonObjects) {
    for (const std::string text :
         {"", "x", "[]", "1", "null", "{", "{}x", "{\"a\":\"\xff\"}", "{\"a\":\"\\ud800\"}", "{'a':1}"}) {
        EXPECT_EQ(failureOf([&] { const Frame frame(text); }), noJsonObject) << text;
    }
    EXPECT_EQ(failureOf([] { const Frame frame(std::string("{}\0{", 4)); }), noJsonObject);
    EXPECT_EQ(Frame(" {} \r").text(), " {} \r");
}

TEST(SettingsCtlFrames, MayBeNestedDeeply) {
    const std::size_t depth = 1000000;
    const Frame frame(R"({"type":25,"payload":{"settingDBId":"k","from":"","to":""},"more":)" +
                      std::string(depth, '[') + std::string(depth, ']') + "}");
    EXPECT_EQ(frame.change()->key, "k");
}

TEST(SettingsCtlFrames, ReplyToOneRequest) {
    const Frame reply(R"({"type":7,"messageId":"m1","payload":{}})");
    EXPECT_TRUE(reply.isReplyTo("m1"));
    EXPECT_FALSE(reply.isReplyTo("m2"));
    EXPECT_FALSE(reply.isReplyTo(""));
    EXPECT_FALSE(Frame(R"({"type":7,"messageId":1})").isReplyTo("1"));
    EXPECT_FALSE(Frame(R"({"type":7})").isReplyTo(""));
}

TEST(SettingsCtlFrames, AreNoRepliesWhenTheyAreEvents) {
    const Frame event(R"({"type":25,"messageId":"m1","payload":{"settingDBId":"k","from":"","to":""}})");
    EXPECT_FALSE(event.isReplyTo("m1"));
}

TEST(SettingsCtlFrames, ReportAChange) {
    const Frame frame(
        R"({"type":25,"timestamp":9007199254740993,"payload":{"settingDBId":"k","from":"a","to":"b\u0000c"}})");
    const auto change = frame.change();
    ASSERT_TRUE(change);
    EXPECT_EQ(change->key, "k");
    EXPECT_EQ(change->from, "a");
    EXPECT_EQ(change->to, std::string("b\0c", 3));
    EXPECT_EQ(frame.timestamp(), 9007199254740993);
}

TEST(SettingsCtlFrames, ReportNoChangeWhenTheyAreOfAnotherType) {
    for (const std::string text :
         {"{}", R"({"type":7,"payload":{}})", R"({"type":"25"})", R"({"type":25.5})", R"({"notice":{"reread":[]}})"}) {
        EXPECT_FALSE(Frame(text).change()) << text;
        EXPECT_FALSE(Frame(text).timestamp()) << text;
    }
}

TEST(SettingsCtlFrames, AreMalformedWhenAnEventLacksAMember) {
    for (const std::string payload :
         {"null", "[]", "{}", R"({"settingDBId":"k","from":"a"})", R"({"settingDBId":"k","to":"a"})",
          R"({"from":"a","to":"b"})", R"({"settingDBId":"k","from":"a","to":true})"}) {
        const Frame frame(R"({"type":25,"payload":)" + payload + "}");
        EXPECT_EQ(failureOf([&] { frame.change(); }), notUnderstood) << payload;
    }
    EXPECT_EQ(failureOf([] { Frame(R"({"type":25})").change(); }), notUnderstood);
}

TEST(SettingsCtlFrames, AskToRereadKeys) {
    const std::vector<std::string> keys{"captionsEnabled", "timezone"};
    EXPECT_EQ(Frame(R"({"notice":{"reread":["captionsEnabled","timezone"]}})").reread(), keys);
    EXPECT_EQ(Frame(R"({"notice":{"reread":[]}})").reread(), std::vector<std::string>{});
    for (const std::string text : {"{}", R"({"notice":1})", R"({"notice":{}})", R"({"notice":{"reread":"a"}})"}) {
        EXPECT_FALSE(Frame(text).reread()) << text;
    }
}

TEST(SettingsCtlFrames, ReportARefusal) {
    const Frame refusal(R"({"error":{"code":"too-large","message":"the frame is larger than 64 KiB"}})");
    EXPECT_EQ(
        failureOf([&] { refusal.throwIfRefusal(); }),
        std::pair(REFUSED, std::string("the host refused the request: the frame is larger than 64 KiB (too-large)")));
    EXPECT_NO_THROW(Frame(R"({"type":7})").throwIfRefusal());
    EXPECT_EQ(failureOf([] { Frame(R"({"error":"odd"})").throwIfRefusal(); }), notUnderstood);
}

TEST(SettingsCtlFrames, HoldStringsInTheOrderOfTheirKeys) {
    const Frame frame(R"({"payload":{"settings":{"b":"2","a":"1"}}})");
    const std::map<std::string, std::string> expected{{"a", "1"}, {"b", "2"}};
    EXPECT_EQ(frame.stringsAt({"payload", "settings"}), expected);
    EXPECT_EQ(failureOf([&] { frame.stringsAt({"payload", "other"}); }), notUnderstood);
    EXPECT_EQ(failureOf([] { Frame(R"({"payload":{"a":1}})").stringsAt({"payload"}); }), notUnderstood);
}

TEST(SettingsCtlFrames, HoldBooleans) {
    const Frame frame(R"({"payload":{"yes":true,"no":false,"text":"true"}})");
    EXPECT_EQ(frame.booleanAt({"payload", "yes"}), true);
    EXPECT_EQ(frame.booleanAt({"payload", "no"}), false);
    EXPECT_EQ(frame.booleanAt({"payload", "text"}), std::nullopt);
    EXPECT_EQ(frame.booleanAt({"other", "yes"}), std::nullopt);
}

namespace {

/// What the program understands of a frame.
std::string kindOf(const Frame& frame) {
    if (frame.change()) {
        return "setting-changed-event";
    }
    if (frame.reread()) {
        return "notice";
    }
    try {
        frame.throwIfRefusal();
    } catch (const Failure&) {
        return "refusal";
    }
    const std::string mark = R"("messageId":")";
    const std::size_t start = frame.text().find(mark) + mark.size();
    if (!frame.isReplyTo(frame.text().substr(start, frame.text().find('"', start) - start))) {
        return "nothing";
    }
    return frame.booleanAt({"payload", "isOrliaSelectedAsVA"}) ? "is-orlia-selected-va-reply" : "get-settings-reply";
}

std::string frameOf(const std::string& example, std::size_t step) {
    return WireTests::exampleNamed(example).steps.at(step).frame + "\n";
}

}  // namespace

TEST(SettingsCtlExamples, AreUnderstood) {
    int seen = 0;
    for (const auto& example : WireTests::allExamples()) {
        for (const auto& step : example.steps) {
            if (!step.sent && step.at != "device") {
                EXPECT_EQ(kindOf(Frame(step.frame)), step.schema) << step.frame;
                ++seen;
            }
        }
    }
    EXPECT_GE(seen, 20);
}

TEST(SettingsCtlExamples, AreWhatIsSent) {
    EXPECT_EQ(getSettingsRequest("m1", {"timezone", "captionsEnabled", "noSuchKey"}), frameOf("get-settings", 0));
    EXPECT_EQ(getSettingsRequest("m2", {}), frameOf("get-settings", 2));
    EXPECT_EQ(setSettingsRequest("page-2", 1700000000000, "deviceName", "Living room"), frameOf("page-sets", 0));
    EXPECT_EQ(bareRequest(IS_SELECTED, "m5"), frameOf("assistant", 0));
}
