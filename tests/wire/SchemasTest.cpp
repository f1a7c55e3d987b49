#include <set>

#include <gtest/gtest.h>

#include "wire/Examples.h"
#include "wire/Mutations.h"
#include "wire/Schemas.h"

namespace WireTests {

namespace {

const Schemas& schemas() {
    return Schemas::ofTheWire();
}

/// Is it within the protocol?
bool isAllowed(const std::string& fault) {
    static const std::set<std::string> faults{// Went to every client.
                                              "/trace/client became null",
                                              // As after a setting that did change.
                                              "/changed was removed",
                                              // Not there before the first launch.
                                              "/device/lastLaunchedApp was removed"};
    // Any settings may have been asked for.
    const bool asksForFewer = fault.rfind("/payload/settings/", 0) == 0 && fault.find(" was removed") != fault.npos;
    return asksForFewer || faults.count(fault) > 0;
}

}  // namespace

TEST(Schemas, AcceptEveryExample) {
    const auto examples = allExamples();
    ASSERT_GE(examples.size(), 15U);
    for (const auto& example : examples) {
        for (const auto& step : example.steps) {
            if (!step.schema.empty()) {
                EXPECT_EQ(schemas().faultOf(step.schema, step.frame).value_or(""), "") << example.name;
            }
        }
    }
}

TEST(Schemas, AreAllShownByAnExample) {
    std::set<std::string> shown{"settings", "health"};
    for (const auto& example : allExamples()) {
        for (const auto& step : example.steps) {
            shown.insert(step.schema);
        }
    }
    for (const auto& name : schemas().names()) {
        EXPECT_EQ(shown.count(name), 1U) << name;
    }
}

TEST(Schemas, RefuseRequestsThatTheHandlerDrops) {
    int seen = 0;
    for (const auto& example : allExamples()) {
        for (const auto& step : example.steps) {
            if (!step.sent || !step.schema.empty()) {
                continue;
            }
            ++seen;
            for (const std::string name : {"get-settings-request", "is-orlia-selected-va-request", "log-out-request",
                                           "open-va-settings-request", "set-settings-request", "device-command"}) {
                EXPECT_TRUE(schemas().faultOf(name, step.frame)) << step.frame << " is no " << name;
            }
        }
    }
    EXPECT_GE(seen, 6);
}

TEST(Schemas, RefuseWhatAHostRefuses) {
    const auto frames = refusedFrames();
    EXPECT_GE(frames.size(), 25U);
    for (const auto& refused : frames) {
        EXPECT_TRUE(schemas().faultOf(refused.schema, refused.frame)) << refused.frame;
    }
}

TEST(Schemas, KnowTheKindOfEveryFrameOfTheHost) {
    for (const auto& example : allExamples()) {
        for (const auto& step : example.steps) {
            const Listener listener = step.at == "device" ? Listener::DEVICE : Listener::SETTINGS;
            if (!step.sent) {
                EXPECT_EQ(schemaOfHostFrame(listener, step.frame), step.schema) << step.frame;
            }
        }
    }
    for (const std::string frame : {"{}", "[]", "x", R"({"type":8})", R"({"type":"7"})", R"({"type":24})"}) {
        EXPECT_EQ(schemaOfHostFrame(Listener::SETTINGS, frame), "") << frame;
        EXPECT_EQ(schemaOfHostFrame(Listener::DEVICE, frame), "") << frame;
    }
    EXPECT_EQ(schemaOfHostFrame(Listener::SETTINGS, R"({"ok":true})"), "") << "only the device listeners send it";
}

TEST(Schemas, RefuseEveryFrameOfTheHostWithAMemberTooManyTooFewOrOfAnotherType) {
    int tried = 0;
    for (const auto& example : allExamples()) {
        for (const auto& step : example.steps) {
            if (step.sent) {
                continue;
            }
            for (const auto& mutation : mutationsOf(step.frame)) {
                EXPECT_EQ(!schemas().faultOf(step.schema, mutation.frame), isAllowed(mutation.fault))
                    << step.schema << ": " << mutation.fault << ": " << mutation.frame;
                ++tried;
            }
        }
    }
    EXPECT_GE(tried, 500);
}

TEST(Schemas, SayWhereAFrameBreaksThem) {
    EXPECT_EQ(schemas().faultOfHostFrame(Listener::SETTINGS, R"({"notice":{"reread":["a",1]}})"),
              R"(#/notice/reread/1 breaks "type" at #/properties/notice/properties/reread/items)"
              R"( of docs/schemas/notice.json, in the frame {"notice":{"reread":["a",1]}})");
    EXPECT_EQ(schemas().faultOfHostFrame(Listener::DEVICE, "{"), "no schema is for the frame {");
    EXPECT_EQ(schemas().faultOf("notice", "{"), "no JSON: {");
}

}  // namespace WireTests
