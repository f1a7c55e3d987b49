#include <gtest/gtest.h>

#include "mqtt/Pauses.h"

namespace MqttTest {

TEST(Pauses, GrowAreRandomAndBeginAgainAfterALongConnection) {
    using Seconds = Mqtt::Pauses::Seconds;
    Mqtt::Pauses pauses(Seconds(1.5), Seconds(10), 1);
    Mqtt::Pauses others(Seconds(1.5), Seconds(10), 2);
    bool areDifferent = false;
    for (const double upTo : {1.5, 3.0, 6.0, 10.0, 10.0}) {
        const auto pause = pauses.next(Seconds(59.9));
        EXPECT_GE(pause.count(), upTo / 2);
        EXPECT_LE(pause.count(), upTo);
        areDifferent = areDifferent || pause != others.next(Seconds(0));
    }
    EXPECT_TRUE(areDifferent);
    EXPECT_LE(pauses.next(Seconds(60)).count(), 1.5);
}

}  // namespace MqttTest
