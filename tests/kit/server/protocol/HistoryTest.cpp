#include <gtest/gtest.h>

#include "server/protocol/History.h"

namespace SettingsHandlerKit {

namespace {

using Texts = std::vector<std::string>;

Texts textsOf(const std::vector<SharedFrame>& frames) {
    Texts texts;
    for (const auto& frame : frames) {
        texts.push_back(*frame);
    }
    return texts;
}

}  // namespace

class HistoryTest : public ::testing::Test {
protected:
    /// Adds the event `sequence`, whose frame is `text`.
    void event(unsigned long sequence, const std::string& key = "deviceName", std::string text = "") {
        if (text.empty()) {
            text = std::to_string(sequence);
        }
        history.add({std::make_shared<const std::string>(std::move(text)), {key}, sequence});
    }

    void notice(std::vector<std::string> keys) {
        history.add({std::make_shared<const std::string>("notice"), std::move(keys)});
    }

    /// What a client missed that has seen the event `sequence`: "1 2 reread: a b" or "missed".
    std::string since(unsigned long sequence) const {
        const auto missed = history.since(sequence);
        if (!missed) {
            return "missed";
        }
        std::string text;
        for (const auto& frame : missed->events) {
            text += *frame + " ";
        }
        text += "reread:";
        for (const auto& key : missed->reread) {
            text += " " + key;
        }
        return text;
    }

    Texts newest(std::size_t limit, const std::optional<std::string>& key = std::nullopt) const {
        return textsOf(history.events(limit, key));
    }

    History history;
};

TEST_F(HistoryTest, IsEmptyAtFirst) {
    EXPECT_EQ(history.newest(), 0U);
    EXPECT_EQ(newest(History::maximumEntries), Texts());
    EXPECT_EQ(since(0), "reread:");
    EXPECT_EQ(since(1), "missed");
}

TEST_F(HistoryTest, KnowsTheEventsAfterEachOther) {
    event(1);
    event(2);
    event(3);
    EXPECT_EQ(history.newest(), 3U);
    EXPECT_EQ(since(0), "1 2 3 reread:");
    EXPECT_EQ(since(2), "3 reread:");
    EXPECT_EQ(since(3), "reread:");
    EXPECT_EQ(since(4), "missed") << "ahead";
}

TEST_F(HistoryTest, SharesTheFrames) {
    const auto frame = std::make_shared<const std::string>("frame");
    history.add({frame, {"deviceName"}, 1});
    EXPECT_EQ(history.since(0)->events.front(), frame);
    EXPECT_EQ(history.events(1, std::nullopt).front(), frame);
    history.clear();
    EXPECT_EQ(frame.use_count(), 1);
}

TEST_F(HistoryTest, AClientThatHasSeenThePrecedingEventMissesTheNotice) {
    notice({"timezone"});
    event(1);
    notice({"captionsEnabled", "orliaLocale"});
    notice({"captionsEnabled", "doNotDisturbEnabled"});
    event(2);
    EXPECT_EQ(since(0), "1 2 reread: captionsEnabled doNotDisturbEnabled orliaLocale timezone");
    EXPECT_EQ(since(1), "2 reread: captionsEnabled doNotDisturbEnabled orliaLocale");
    EXPECT_EQ(since(2), "reread:");
}

TEST_F(HistoryTest, GivesTheNewestEventsOldestFirst) {
    event(1, "deviceName");
    event(2, "timezone");
    notice({"deviceName"});
    event(3, "deviceName");
    event(4, "deviceName");
    EXPECT_EQ(newest(2), (Texts{"3", "4"}));
    EXPECT_EQ(newest(1024), (Texts{"1", "2", "3", "4"}));
    EXPECT_EQ(newest(2, "deviceName"), (Texts{"3", "4"}));
    EXPECT_EQ(newest(3, "deviceName"), (Texts{"1", "3", "4"}));
    EXPECT_EQ(newest(3, "timezone"), Texts{"2"});
    EXPECT_EQ(newest(3, "device"), Texts());
}

TEST_F(HistoryTest, ForgetsTheOldestOfMoreThan1024EventsAndNotices) {
    for (unsigned long sequence = 1; sequence <= 1023; ++sequence) {
        event(sequence);
    }
    notice({"timezone"});
    EXPECT_EQ(since(0).substr(0, 4), "1 2 ");
    event(1024);
    EXPECT_EQ(since(0), "missed");
    EXPECT_EQ(since(1).substr(0, 4), "2 3 ");
    EXPECT_EQ(newest(1024).size(), 1023U);
    EXPECT_EQ(newest(1024).front(), "2");
}

TEST_F(HistoryTest, WhoMayHaveMissedAForgottenNoticeMissed) {
    notice({"timezone"});
    for (unsigned long sequence = 1; sequence <= 1023; ++sequence) {
        event(sequence);
    }
    EXPECT_EQ(since(0).substr(0, 4), "1 2 ");
    notice({"captionsEnabled"});
    EXPECT_EQ(since(0), "missed") << "the notice before event 1 is forgotten";
    EXPECT_EQ(since(1).substr(0, 4), "2 3 ");
    EXPECT_EQ(since(1022), "1023 reread: captionsEnabled");
}

TEST_F(HistoryTest, ForgetsTheOldestWhenTheFramesAreLarge) {
    const std::string large(100000, 'x');
    for (unsigned long sequence = 1; sequence <= 6; ++sequence) {
        event(sequence, "deviceName", std::to_string(sequence) + large);
    }
    EXPECT_LE(history.size(), History::maximumBytes);
    EXPECT_EQ(since(0), "missed");
    EXPECT_EQ(newest(1024).size(), 5U);
    EXPECT_EQ(newest(1024).front(), "2" + large);
    event(7);
    EXPECT_EQ(newest(1024).size(), 6U) << "a small one has room beside them";
}

TEST_F(HistoryTest, AnEventLargerThanTheLimitIsForgottenAtOnce) {
    event(1);
    event(2, "deviceName", std::string(History::maximumBytes, 'x'));
    EXPECT_EQ(newest(1024), Texts());
    EXPECT_EQ(history.newest(), 2U);
    EXPECT_EQ(since(1), "missed");
    EXPECT_EQ(since(2), "reread:");
    event(3);
    EXPECT_EQ(since(2), "3 reread:");
}

TEST_F(HistoryTest, NobodyResumesFromBeforeAClearing) {
    event(1);
    event(2);
    history.clear();
    EXPECT_EQ(newest(1024), Texts());
    EXPECT_EQ(history.newest(), 2U) << "sequences go on";
    for (const unsigned long sequence : {0UL, 1UL, 2UL, 3UL}) {
        EXPECT_EQ(since(sequence), "missed") << sequence;
    }
    event(3);
    EXPECT_EQ(since(2), "missed");
    EXPECT_EQ(since(3), "reread:");
    event(4);
    EXPECT_EQ(since(3), "4 reread:");
    EXPECT_EQ(newest(1024), (Texts{"3", "4"}));
}

TEST_F(HistoryTest, KeepsNoNoticeAfterAClearingUntilTheNextEvent) {
    const std::size_t empty = history.size();
    event(1);
    history.clear();
    notice({"a key that somebody chose"});
    EXPECT_EQ(history.size(), empty);
    event(2);
    notice({"timezone"});
    EXPECT_EQ(since(2), "reread: timezone");
}

TEST_F(HistoryTest, ClearingTwiceIsAsOnce) {
    history.clear();
    history.clear();
    EXPECT_EQ(since(0), "missed");
    event(1);
    EXPECT_EQ(since(1), "reread:");
}

}  // namespace SettingsHandlerKit
