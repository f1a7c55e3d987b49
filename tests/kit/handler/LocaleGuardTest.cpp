#include "Wire/FrameInspector.h"
#include "handler/LocaleGuard.h"

namespace SettingsHandlerKit {

namespace {

std::string nested(std::size_t depth) {
    return std::string(depth, '[') + "\"en-US\"" + std::string(depth, ']');
}

/// The road of a request in the host.
bool passes(const std::string& frame) {
    rapidjson::Document request;
    EXPECT_FALSE(Wire::inspectFrame(frame, request)) << frame;
    return isRequestSafeForHandler(request);
}

}  // namespace

TEST(LocaleGuard, AcceptsAnyValueOfOtherSettings) {
    for (const auto* key : {"deviceName", "OrliaLocale", "orliaLocale ", ""}) {
        EXPECT_TRUE(isSafeForHandler(key, "{}")) << key;
    }
}

TEST(LocaleGuard, AcceptsArraysAndTextsThatAreNotJson) {
    for (const auto* value : {"[]", R"(["en-US"])", " [1, null] ", "", "en-US", "[", R"(["en-US"] x)"}) {
        EXPECT_TRUE(isSafeForHandler("orliaLocale", value)) << value;
    }
}

TEST(LocaleGuard, RejectsOtherJson) {
    for (const auto* value : {"{}", R"("en-US")", "5", "null", "true", " {\"a\":[]} ", "1e5"}) {
        EXPECT_FALSE(isSafeForHandler("orliaLocale", value)) << value;
    }
}

TEST(LocaleGuard, EndsAtANulAsTheHandlerDoes) {
    EXPECT_FALSE(isSafeForHandler("orliaLocale", std::string("{}\0[", 4)));
    EXPECT_TRUE(isSafeForHandler("orliaLocale", std::string("[]\0{}", 5)));
    EXPECT_TRUE(isSafeForHandler("orliaLocale", std::string("\0{}", 3)));
}

TEST(LocaleGuard, LimitsTheNesting) {
    EXPECT_TRUE(isSafeForHandler("orliaLocale", nested(32)));
    EXPECT_FALSE(isSafeForHandler("orliaLocale", nested(33)));
    EXPECT_FALSE(isSafeForHandler("orliaLocale", nested(200000)));
    EXPECT_TRUE(isSafeForHandler("orliaLocale", std::string(200000, '['))) << "no JSON: the handler refuses it";
}

TEST(LocaleGuard, ReadsRequestsAsTheHandlerDoes) {
    const auto payloadPasses = [](const std::string& payload) {
        return passes(R"({"type":24,"timestamp":1,"payload":)" + payload + "}");
    };
    EXPECT_TRUE(payloadPasses(R"({"settingDBId":"orliaLocale","to":"[\"en-US\"]"})"));
    EXPECT_FALSE(payloadPasses(R"({"settingDBId":"orliaLocale","to":"{}"})"));
    EXPECT_FALSE(payloadPasses(R"({"settingDBId":"orlia\u004cocale","to":"\u007b}"})")) << "escapes";
    EXPECT_FALSE(payloadPasses(R"({"settingDBId":"orliaLocale","to":"{}\u0000["})")) << "the end at a NUL";
    // The first of duplicate members is the one that counts.
    EXPECT_FALSE(payloadPasses(R"({"settingDBId":"orliaLocale","settingDBId":"deviceName","to":"{}","to":"[]"})"));
    EXPECT_TRUE(payloadPasses(R"({"settingDBId":"deviceName","settingDBId":"orliaLocale","to":"{}"})"));
    EXPECT_TRUE(payloadPasses(R"({"settingDBId":"orliaLocale","to":"[]","to":"{}"})"));
    EXPECT_FALSE(passes(
        R"({"payload":{"settingDBId":"orliaLocale","to":"{}"},"payload":{"settingDBId":"deviceName","to":"x"}})"));
    // What the handler itself refuses before it looks at the value.
    EXPECT_TRUE(payloadPasses("[]"));
    EXPECT_TRUE(payloadPasses(R"({"settingDBId":"orliaLocale","to":{}})"));
    EXPECT_TRUE(payloadPasses(R"({"settingDBId":5,"to":"{}"})"));
    EXPECT_TRUE(passes("{}"));
    EXPECT_TRUE(isRequestSafeForHandler(rapidjson::Value(rapidjson::kArrayType)));
}

}  // namespace SettingsHandlerKit
