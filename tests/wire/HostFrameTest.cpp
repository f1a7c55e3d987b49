#include <gtest/gtest.h>

#include "Wire/HostFrame.h"
#include "wire/Examples.h"

using namespace Wire;

namespace {

/// What the `MalformedFrame` says that `action` throws.
template <typename Action>
std::string faultOf(const Action& action) {
    try {
        action();
    } catch (const MalformedFrame& error) {
        return error.what();
    }
    return "nothing was thrown";
}

constexpr const char* notAnObject = "not a JSON object";
constexpr const char* malformed = "malformed frame";

}  // namespace

TEST(HostFrames, MustBeJsonObjects) {
    for (const std::string text :
         {"", "x", "[]", "1", "null", "{", "{}x", "{\"a\":\"\xff\"}", R"({"a":"\ud800"})", "{'a':1}"}) {
        EXPECT_EQ(faultOf([&] { const HostFrame frame(text); }), notAnObject) << text;
    }
    EXPECT_EQ(faultOf([] { const HostFrame frame(std::string("{}\0{", 4)); }), notAnObject);
    EXPECT_EQ(HostFrame(" {} \r").text(), " {} \r");
}

TEST(HostFrames, MayBeNestedDeeply) {
    const std::size_t depth = 1000000;
    const HostFrame frame(R"({"type":25,"payload":{"settingDBId":"k","from":"","to":""},"more":)" +
                          std::string(depth, '[') + std::string(depth, ']') + "}");
    EXPECT_EQ(frame.change()->key, "k");
}

TEST(HostFrames, ReplyToOneRequest) {
    const HostFrame reply(R"({"type":7,"messageId":"m1","payload":{}})");
    EXPECT_TRUE(reply.isReplyTo("m1"));
    EXPECT_FALSE(reply.isReplyTo("m2"));
    EXPECT_FALSE(reply.isReplyTo(""));
    EXPECT_FALSE(HostFrame(R"({"type":7,"messageId":1})").isReplyTo("1"));
    EXPECT_FALSE(HostFrame(R"({"type":7})").isReplyTo(""));
}

TEST(HostFrames, AreNoRepliesWhenTheyAreEvents) {
    const HostFrame event(R"({"type":25,"messageId":"m1","payload":{"settingDBId":"k","from":"","to":""}})");
    EXPECT_FALSE(event.isReplyTo("m1"));
}

TEST(HostFrames, ReportAChange) {
    const HostFrame frame(
        R"({"type":25,"timestamp":9007199254740993,"payload":{"settingDBId":"k","from":"a","to":"b\u0000c"}})");
    const auto change = frame.change();
    ASSERT_TRUE(change);
    EXPECT_EQ(change->key, "k");
    EXPECT_EQ(change->from, "a");
    EXPECT_EQ(change->to, std::string("b\0c", 3));
    EXPECT_EQ(frame.timestamp(), 9007199254740993);
}

TEST(HostFrames, ReportNoChangeWhenTheyAreOfAnotherType) {
    for (const std::string text : {"{}", R"({"type":7,"timestamp":1,"payload":{}})", R"({"type":"25"})",
                                   R"({"type":25.5})", R"({"notice":{"reread":[]}})"}) {
        EXPECT_FALSE(HostFrame(text).change()) << text;
        EXPECT_FALSE(HostFrame(text).timestamp()) << text;
    }
}

TEST(HostFrames, AreMalformedWhenAnEventLacksAMember) {
    for (const std::string payload :
         {"null", "[]", "{}", R"({"settingDBId":"k","from":"a"})", R"({"settingDBId":"k","to":"a"})",
          R"({"from":"a","to":"b"})", R"({"settingDBId":"k","from":"a","to":true})"}) {
        const HostFrame frame(R"({"type":25,"payload":)" + payload + "}");
        EXPECT_EQ(faultOf([&] { frame.change(); }), malformed) << payload;
    }
    EXPECT_EQ(faultOf([] { HostFrame(R"({"type":25})").change(); }), malformed);
}

TEST(HostFrames, AskToRereadKeys) {
    const std::vector<std::string> keys{"captionsEnabled", "timezone"};
    EXPECT_EQ(HostFrame(R"({"notice":{"reread":["captionsEnabled","timezone"]}})").reread(), keys);
    EXPECT_EQ(HostFrame(R"({"notice":{"reread":[]}})").reread(), std::vector<std::string>{});
    for (const std::string text : {"{}", R"({"notice":1})", R"({"notice":{}})", R"({"notice":{"reread":"a"}})"}) {
        EXPECT_FALSE(HostFrame(text).reread()) << text;
    }
}

TEST(HostFrames, ReportARefusal) {
    const HostFrame frame(R"({"error":{"code":"too-large","message":"the frame is larger than 64 KiB"}})");
    ASSERT_TRUE(frame.refusal());
    EXPECT_EQ(frame.refusal()->code, "too-large");
    EXPECT_EQ(frame.refusal()->message, "the frame is larger than 64 KiB");
    EXPECT_FALSE(HostFrame(R"({"type":7})").refusal());
    EXPECT_EQ(HostFrame(R"({"error":{}})").refusal()->code, "");
    EXPECT_EQ(HostFrame(R"({"error":{"code":"bad-request","index":2}})").refusal()->code, "bad-request");
    for (const std::string text : {R"({"error":"odd"})", R"({"error":{"code":7}})"}) {
        EXPECT_EQ(faultOf([&] { HostFrame(text).refusal(); }), malformed) << text;
    }
}

TEST(HostFrames, HoldStringsInTheOrderOfTheirKeys) {
    const HostFrame frame(R"({"payload":{"settings":{"b":"2","a":"1"}}})");
    const std::map<std::string, std::string> expected{{"a", "1"}, {"b", "2"}};
    EXPECT_EQ(frame.stringsAt({"payload", "settings"}), expected);
    EXPECT_EQ(faultOf([&] { frame.stringsAt({"payload", "other"}); }), malformed);
    EXPECT_EQ(faultOf([] { HostFrame(R"({"payload":{"a":1}})").stringsAt({"payload"}); }), malformed);
}

TEST(HostFrames, HoldIntegers) {
    using Integers = std::map<std::string, std::int64_t>;
    const HostFrame frame(R"({"newest":{"b":9223372036854775807,"a":-1,"text":"1","real":1.5},"list":[1]})");
    EXPECT_EQ(frame.integersAt({"newest"}), (Integers{{"a", -1}, {"b", 9223372036854775807}}));
    EXPECT_EQ(frame.integersAt({"list"}), Integers{});
    EXPECT_EQ(frame.integersAt({"missing"}), Integers{});
}

TEST(HostFrames, HoldBooleans) {
    const HostFrame frame(R"({"payload":{"yes":true,"no":false,"text":"true"}})");
    EXPECT_EQ(frame.booleanAt({"payload", "yes"}), true);
    EXPECT_EQ(frame.booleanAt({"payload", "no"}), false);
    EXPECT_EQ(frame.booleanAt({"payload", "text"}), std::nullopt);
    EXPECT_EQ(frame.booleanAt({"other", "yes"}), std::nullopt);
}

namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// What a client understands of a frame.
std::string kindOf(const HostFrame& frame) {
    if (frame.change()) {
        return "setting-changed-event";
    }
    if (frame.reread()) {
        return "notice";
    }
    if (frame.refusal()) {
        return "refusal";
    }
    const std::string mark = R"("messageId":")";
    const std::size_t start = frame.text().find(mark) + mark.size();
    if (!frame.isReplyTo(frame.text().substr(start, frame.text().find('"', start) - start))) {
        return "nothing";
    }
    return "reply";
}

}  // namespace

TEST(HostFrames, AreUnderstoodInAllExamples) {
    int seen = 0;
    for (const auto& example : WireTests::allExamples()) {
        for (const auto& step : example.steps) {
            if (!step.sent && step.at != "device") {
                const bool toAsker = contains(step.schema, "-reply") || contains(step.schema, "-answer");
                EXPECT_EQ(kindOf(HostFrame(step.frame)), toAsker ? "reply" : step.schema) << step.frame;
                ++seen;
            }
        }
    }
    EXPECT_GE(seen, 20);
}

TEST(HostFrames, GiveMembersByTheirPath) {
    const HostFrame frame(R"({"a":{"i":5,"t":"x","l":["y",1,"z"],"o":{"b": 1},"os":[{},{"c": 2}]}})");
    EXPECT_EQ(frame.integerAt({"a", "i"}), 5);
    EXPECT_EQ(frame.integerAt({"a", "t"}), std::nullopt);
    EXPECT_EQ(frame.textAt({"a", "t"}), "x");
    EXPECT_EQ(frame.textAt({"a", "i"}), std::nullopt);
    EXPECT_EQ(frame.textsAt({"a", "l"}), (std::vector<std::string>{"y", "z"}));
    EXPECT_EQ(frame.textsAt({"a", "t"}), std::nullopt);
    EXPECT_EQ(frame.objectAt({"a", "o"}), R"({"b":1})");
    EXPECT_EQ(frame.objectsAt({"a", "os"}), (std::vector<std::string>{"{}", R"({"c":2})"}));
    EXPECT_EQ(faultOf([&] { frame.objectAt({"a", "os"}); }), malformed);
    EXPECT_EQ(faultOf([&] { frame.objectsAt({"a", "o"}); }), malformed);
    EXPECT_EQ(faultOf([&] { frame.objectsAt({"a", "l"}); }), malformed);
}

TEST(HostFrames, ReportARefusalOfOneRequestOfSeveral) {
    const HostFrame frame(R"({"error":{"code":"busy","message":"no","index":2}})");
    EXPECT_EQ(frame.refusal()->code, "busy");
    EXPECT_EQ(frame.integerAt({"error", "index"}), 2);
    EXPECT_EQ(faultOf([] { HostFrame(R"({"error":{"code":1}})").refusal(); }), malformed);
}
