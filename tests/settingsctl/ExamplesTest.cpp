#include <gtest/gtest.h>

#include "Failure.h"
#include "Wire.h"
#include "wire/Examples.h"

using namespace SettingsCtl;

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
