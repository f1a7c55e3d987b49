#include "Wire/FrameInspector.h"

namespace Wire {

namespace {

std::string codeOf(const std::string& frame) {
    const auto refusal = inspectFrame(frame);
    rapidjson::Document request;
    const auto sameRefusal = inspectFrame(frame, request);
    EXPECT_EQ(refusal.has_value(), sameRefusal.has_value()) << frame;
    if (!refusal) {
        EXPECT_TRUE(request.IsObject()) << frame;
        return "";
    }
    EXPECT_EQ(refusal->message, sameRefusal->message) << frame;
    return refusal->code;
}

std::optional<int> typeOf(const std::string& frame) {
    rapidjson::Document request;
    EXPECT_FALSE(inspectFrame(frame, request)) << frame;
    return requestType(request);
}

}  // namespace

TEST(FrameInspector, AcceptsObjects) {
    for (const auto* frame : {"{}", R"({"type":7})", " {\"a\":\"é😀\"}\r", R"({"a":"\u0000"})"}) {
        EXPECT_EQ(codeOf(frame), "") << frame;
    }
}

TEST(FrameInspector, RefusesTextsThatAreNotJson) {
    for (const std::string frame : {"", "x", "{", "{} {}", "{'a':1}", "\xff", "{\"a\":\"\xff\"}", R"({"a":"\ud800"})",
                                    R"({"a":"\udc00"})", R"({"\udc00":1})"}) {
        EXPECT_EQ(codeOf(frame), "not-json") << frame;
    }
    EXPECT_EQ(codeOf(std::string("{}\0", 3)), "not-json");
    EXPECT_EQ(codeOf(std::string("{\"a\":\"\0\"}", 9)), "not-json");
}

TEST(FrameInspector, RefusesOtherRoots) {
    for (const auto* frame : {"[]", "1", "null", "\"x\"", "true", "[{}]"}) {
        EXPECT_EQ(codeOf(frame), "not-an-object") << frame;
    }
}

TEST(FrameInspector, LimitsTheNesting) {
    const auto objectWithArrays = [](std::size_t depth) {
        return "{\"a\":" + std::string(depth, '[') + std::string(depth, ']') + "}";
    };
    EXPECT_EQ(codeOf(objectWithArrays(31)), "");
    EXPECT_EQ(codeOf(objectWithArrays(32)), "too-deep");
    EXPECT_EQ(codeOf(objectWithArrays(30000)), "too-deep");
    EXPECT_EQ(codeOf(std::string(30000, '[')), "not-json");
}

TEST(FrameInspector, TheFirstTypeCountsIfItIsAnInteger) {
    EXPECT_EQ(typeOf(R"({"type":24,"type":7})"), 24);
    EXPECT_EQ(typeOf(R"({"type":-1})"), -1);
    for (const auto* frame : {"{}", R"({"type":"24"})", R"({"type":24.0})", R"({"type":null})",
                              R"({"type":99999999999})", R"({"payload":{"type":24}})"}) {
        EXPECT_EQ(typeOf(frame), std::nullopt) << frame;
    }
}

}  // namespace Wire
