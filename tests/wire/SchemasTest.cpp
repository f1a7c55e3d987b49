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

bool startsWith(const std::string& text, const std::string& beginning) {
    return text.rfind(beginning, 0) == 0;
}

/// Is the frame of `step` with this fault still valid?
bool isAllowed(const Step& step, const std::string& fault) {
    static const std::set<std::string> faults{// Went to every client.
                                              "device-trace: /trace/client became null",
                                              // As after a setting that did change.
                                              "device-done: /changed was removed",
                                              // Not there before the first launch.
                                              "device-state: /device/lastLaunchedApp was removed",
                                              // As outside a batch.
                                              "refusal: /error/index was removed",
                                              // Of a client without a name.
                                              "setting-changed-event: /client was removed",
                                              // As when the voice SDK took it.
                                              "set-settings-answer: /payload/applied was removed",
                                              // Not there when GetSettings reports none.
                                              "set-settings-answer: /payload/value was removed",
                                              // Not there without pages.
                                              "page-reply: /page/address was removed",
                                              // Not there without a database.
                                              "status-reply: /status/disk was removed",
                                              "status-reply: /status/newest/unknown was added",
                                              // A fault of a later version.
                                              "device-world: /world/faults/unknown was added"};
    const bool wasRemoved = fault.find(" was removed") != fault.npos;
    // A request may ask for any settings.
    const bool asksForFewer = startsWith(fault, "/payload/settings/") && wasRemoved;
    const bool isOtherTime = startsWith(fault, "/status/newest/") && wasRemoved;
    // Of a world everything but its version may be missing.
    const bool isSmallerWorld = step.schema == "device-world" && startsWith(fault, "/world/") && wasRemoved &&
                                fault != "/world/world was removed";
    const bool hasNoKey =
        step.frame.find("incomplete") != std::string::npos && fault == "/payload/settingDBId was removed";
    const bool wasNotResumed =
        step.frame.find(R"("missed":true)") != std::string::npos && fault == "/hello/missed was removed";
    return asksForFewer || isSmallerWorld || isOtherTime || hasNoKey || wasNotResumed ||
           faults.count(step.schema + ": " + fault) > 0;
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

TEST(Schemas, HaveAnExampleEach) {
    std::set<std::string> shown{"settings", "health", "client-name", "world", "scenario"};
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
            for (const std::string name :
                 {"get-settings-request", "is-orlia-selected-va-request", "log-out-request", "open-va-settings-request",
                  "set-settings-request", "batch-request", "hello-request", "device-command"}) {
                EXPECT_TRUE(schemas().faultOf(name, step.frame)) << step.frame << " is no " << name;
            }
        }
    }
    EXPECT_GE(seen, 6);
}

TEST(Schemas, RejectWhatAHostRefuses) {
    const auto frames = refusedFrames();
    EXPECT_GE(frames.size(), 25U);
    for (const auto& refused : frames) {
        EXPECT_TRUE(schemas().faultOf(refused.schema, refused.frame)) << refused.frame;
    }
}

TEST(Schemas, AreFoundForEveryFrameOfTheHost) {
    for (const auto& example : allExamples()) {
        for (const auto& step : example.steps) {
            const Listener listener = step.at == "device" ? Listener::DEVICE : Listener::SETTINGS;
            if (!step.sent) {
                EXPECT_EQ(schemaOfHostFrame(listener, step.frame), step.schema) << step.frame;
            }
        }
    }
    for (const std::string frame : {"{}", "[]", "x", R"({"type":8})", R"({"type":"7"})", R"({"batch":[]})"}) {
        EXPECT_EQ(schemaOfHostFrame(Listener::SETTINGS, frame), "") << frame;
        EXPECT_EQ(schemaOfHostFrame(Listener::DEVICE, frame), "") << frame;
    }
    EXPECT_EQ(schemaOfHostFrame(Listener::SETTINGS, R"({"ok":true})"), "") << "only the device listeners send it";
}

TEST(Schemas, RejectHostFramesWithAnExtraAMissingOrAMistypedMember) {
    int tried = 0;
    for (const auto& example : allExamples()) {
        for (const auto& step : example.steps) {
            if (step.sent) {
                continue;
            }
            for (const auto& mutation : mutationsOf(step.frame)) {
                EXPECT_EQ(!schemas().faultOf(step.schema, mutation.frame), isAllowed(step, mutation.fault))
                    << step.schema << ": " << mutation.fault << ": " << mutation.frame;
                ++tried;
            }
        }
    }
    EXPECT_GE(tried, 500);
}

TEST(Schemas, ReportWhereAFrameIsInvalid) {
    EXPECT_EQ(schemas().faultOfHostFrame(Listener::SETTINGS, R"({"notice":{"reread":["a",1]}})"),
              R"(#/notice/reread/1 breaks "type" at #/properties/notice/properties/reread/items)"
              R"( of docs/schemas/notice.json, in the frame {"notice":{"reread":["a",1]}})");
    EXPECT_EQ(schemas().faultOfHostFrame(Listener::DEVICE, "{"), "no schema is for the frame {");
    EXPECT_EQ(schemas().faultOf("notice", "{"), "no JSON: {");
}

}  // namespace WireTests
