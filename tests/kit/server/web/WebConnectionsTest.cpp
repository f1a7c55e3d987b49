#include "server/web/WebConnections.h"

namespace SettingsHost {

/// Connections are known by their addresses alone.
class WebConnectionsTest : public ::testing::Test {
protected:
    lws* connection(std::size_t number) { return reinterpret_cast<lws*>(&places.at(number)); }

    void arrive(std::size_t count) {
        for (std::size_t number = 0; number < count; ++number) {
            connections.arrived(connection(arrived++));
        }
    }
    void arriveAsGuests(std::size_t count) {
        for (std::size_t number = 0; number < count; ++number) {
            arrive(1);
            connections.admitted(connection(arrived - 1));
        }
    }

    std::vector<char> places = std::vector<char>(300);
    std::size_t arrived = 0;
    WebConnections connections;
};

TEST_F(WebConnectionsTest, HasRoomForThirtyTwoStrangers) {
    arrive(31);
    EXPECT_TRUE(connections.haveRoom());
    arrive(1);
    EXPECT_FALSE(connections.haveRoom());
    connections.admitted(connection(5));
    EXPECT_TRUE(connections.haveRoom());
    arrive(1);
    EXPECT_FALSE(connections.haveRoom());
    connections.left(connection(5));
    EXPECT_FALSE(connections.haveRoom()) << "it was no stranger any more";
    connections.left(connection(6));
    EXPECT_TRUE(connections.haveRoom());
}

TEST_F(WebConnectionsTest, OfAHundredAndTwentyEightMayAllBeGuests) {
    arriveAsGuests(100);
    arrive(27);
    EXPECT_TRUE(connections.haveRoom());
    arrive(1);
    EXPECT_FALSE(connections.haveRoom());
    EXPECT_EQ(connections.oldestStranger(), connection(100));
    for (std::size_t number = 100; number < 128; ++number) {
        connections.admitted(connection(number));
    }
    EXPECT_FALSE(connections.haveRoom());
    EXPECT_EQ(connections.oldestStranger(), nullptr);
}

TEST_F(WebConnectionsTest, KnowsTheOldestStranger) {
    EXPECT_EQ(connections.oldestStranger(), nullptr);
    arrive(4);
    connections.admitted(connection(0));
    EXPECT_EQ(connections.oldestStranger(), connection(1));
    connections.left(connection(1));
    EXPECT_EQ(connections.oldestStranger(), connection(2));
    EXPECT_FALSE(connections.isStranger(connection(0)));
    EXPECT_TRUE(connections.isStranger(connection(3)));
    // Who is gone is not admitted.
    connections.admitted(connection(1));
    connections.forgetGuests([](lws*) { return false; });
    EXPECT_FALSE(connections.isStranger(connection(1)));
}

TEST_F(WebConnectionsTest, GuestsBecomeStrangersWhenWhatTheyShowedIsWorthless) {
    arriveAsGuests(40);
    connections.forgetGuests([this](lws* guest) { return guest == connection(7); });
    EXPECT_FALSE(connections.haveRoom());
    EXPECT_FALSE(connections.isStranger(connection(7)));
    std::size_t strangers = 0;
    for (std::size_t number = 0; number < 40; ++number) {
        strangers += connections.isStranger(connection(number)) ? 1 : 0;
    }
    EXPECT_EQ(strangers, 39U);
}

}  // namespace SettingsHost
