#include <memory>

#include <gtest/gtest.h>

#include "FakeBroker.h"
#include "mqtt/Outbox.h"

namespace MqttTest {

class OutboxTest : public testing::Test {
protected:
    /// As many messages as a broker may leave unacknowledged.
    void fill() {
        for (std::size_t number = 0; number < Mqtt::Outbox::window; ++number) {
            outbox.add({"x", ""});
        }
        broker->lines.clear();
    }

    const std::shared_ptr<FakeBroker> broker = std::make_shared<FakeBroker>();
    Mqtt::Outbox outbox{broker};
    int acknowledged = 0;
};

TEST_F(OutboxTest, WaitsForAConnection) {
    outbox.add({"a", "1"});
    EXPECT_TRUE(broker->lines.empty());
    outbox.connected({{"b", "2", true}});
    EXPECT_EQ(broker->lines, (Lines{"*b 2", "a 1"}));
    EXPECT_FALSE(outbox.isEmpty());
    outbox.acknowledged(1);
    outbox.acknowledged(2);
    EXPECT_TRUE(outbox.isEmpty());
}

TEST_F(OutboxTest, WaitsWhenTheBrokerIsSlow) {
    outbox.connected({});
    fill();
    outbox.add({"a", "1"});
    EXPECT_TRUE(broker->lines.empty());
    outbox.acknowledged(1);
    EXPECT_EQ(broker->lines, (Lines{"a 1"}));
}

TEST_F(OutboxTest, SkipsWhatIsTooLargeForTheBroker) {
    broker->maximumPayload = 1;
    outbox.add({"a", "too large"});
    outbox.add({"b", "1"});
    outbox.connected({{"c", "too large", true}, {"d", "2", true}});
    EXPECT_EQ(broker->lines, (Lines{"*d 2", "b 1"}));
    outbox.acknowledged(1);
    outbox.acknowledged(2);
    EXPECT_TRUE(outbox.isEmpty());
}

TEST_F(OutboxTest, SendsTheNewestOfASlotAndOfARetainedTopic) {
    outbox.connected({});
    fill();
    outbox.add({"event", "1"}, "event of a");
    outbox.add({"state", "1", true});
    outbox.add({"event", "2"}, "event of b");
    outbox.add({"event", "3"}, "event of a");
    outbox.add({"state", "2", true});
    for (int number = 1; number <= 5; ++number) {
        outbox.acknowledged(number);
    }
    EXPECT_EQ(broker->lines, (Lines{"event 2", "event 3", "*state 2"}));
}

TEST_F(OutboxTest, DropsTheOldestOfTooManyBytesWithoutSlot) {
    const std::string half(Mqtt::Outbox::maximumWaiting / 2, 'x');
    for (int round = 0; round < 2; ++round) {
        broker->lines.clear();
        outbox.add({"event", half}, "event of a");
        for (const std::string topic : {"a", "b", "c"}) {
            outbox.add({topic, half});
        }
        outbox.connected({});
        EXPECT_EQ(broker->lines, (Lines{"event " + half, "b " + half, "c " + half}));
        while (!outbox.isEmpty()) {
            outbox.acknowledged(++acknowledged);
        }
        outbox.lost();
    }
}

TEST_F(OutboxTest, SendsAgainWhatWasNotAcknowledgedExceptRetainedMessages) {
    outbox.connected({{"state", "1", true}});
    outbox.add({"a", "1"});
    outbox.add({"a", "2"});
    outbox.acknowledged(2);
    outbox.lost();
    outbox.add({"state", "2", true});
    broker->lines.clear();
    outbox.connected({{"state", "3", true}});
    EXPECT_EQ(broker->lines, (Lines{"*state 3", "a 2"}));
}

TEST_F(OutboxTest, SendsNothingOfASlotThatIsForgotten) {
    outbox.connected({});
    outbox.add({"event", "1"}, "event of a");
    outbox.lost();
    outbox.add({"event", "2"}, "event of b");
    outbox.forget("event of a");
    outbox.forget("event of b");
    broker->lines.clear();
    outbox.connected({});
    outbox.add({"event", "3"}, "event of a");
    outbox.forget("event of a");
    outbox.lost();
    outbox.connected({});
    EXPECT_EQ(broker->lines, (Lines{"event 3"}));
}

}  // namespace MqttTest
