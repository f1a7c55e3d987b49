#include "server/web/WebConnections.h"

namespace SettingsHandlerKit {

/// Connections are known by their addresses alone.
class WebConnectionsTest : public ::testing::Test {
protected:
    const ByteStream* connection(std::size_t number) { return reinterpret_cast<const ByteStream*>(&places.at(number)); }

    void open(std::size_t count) {
        for (std::size_t number = 0; number < count; ++number) {
            connections.opened(connection(opened++));
        }
    }
    void openAuthenticated(std::size_t count) {
        for (std::size_t number = 0; number < count; ++number) {
            open(1);
            connections.authenticate(connection(opened - 1));
        }
    }

    std::vector<char> places = std::vector<char>(300);
    std::size_t opened = 0;
    WebConnections connections;
};

TEST_F(WebConnectionsTest, HasRoomForThirtyTwoUnauthenticatedConnections) {
    open(31);
    EXPECT_TRUE(connections.haveRoom());
    open(1);
    EXPECT_FALSE(connections.haveRoom());
    connections.authenticate(connection(5));
    EXPECT_TRUE(connections.haveRoom());
    open(1);
    EXPECT_FALSE(connections.haveRoom());
    connections.closed(connection(5));
    EXPECT_FALSE(connections.haveRoom()) << "it was authenticated";
    connections.closed(connection(6));
    EXPECT_TRUE(connections.haveRoom());
}

TEST_F(WebConnectionsTest, AllOfAHundredAndTwentyEightMayBeAuthenticated) {
    openAuthenticated(100);
    open(27);
    EXPECT_TRUE(connections.haveRoom());
    open(1);
    EXPECT_FALSE(connections.haveRoom());
    EXPECT_EQ(connections.oldestUnauthenticated(), connection(100));
    for (std::size_t number = 100; number < 128; ++number) {
        connections.authenticate(connection(number));
    }
    EXPECT_FALSE(connections.haveRoom());
    EXPECT_EQ(connections.oldestUnauthenticated(), nullptr);
}

TEST_F(WebConnectionsTest, KnowsTheOldestUnauthenticatedConnection) {
    EXPECT_EQ(connections.oldestUnauthenticated(), nullptr);
    open(4);
    connections.authenticate(connection(0));
    EXPECT_EQ(connections.oldestUnauthenticated(), connection(1));
    connections.closed(connection(1));
    EXPECT_EQ(connections.oldestUnauthenticated(), connection(2));
    EXPECT_FALSE(connections.isUnauthenticated(connection(0)));
    EXPECT_TRUE(connections.isUnauthenticated(connection(3)));
    // A closed connection is not authenticated.
    connections.authenticate(connection(1));
    connections.forgetAuthentication([](const ByteStream*) { return false; });
    EXPECT_FALSE(connections.isUnauthenticated(connection(1)));
}

TEST_F(WebConnectionsTest, ForgettingAuthenticationKeepsOnlyTheGivenOnes) {
    openAuthenticated(40);
    connections.forgetAuthentication([this](const ByteStream* authenticated) { return authenticated == connection(7); });
    EXPECT_FALSE(connections.haveRoom());
    EXPECT_FALSE(connections.isUnauthenticated(connection(7)));
    std::size_t unauthenticated = 0;
    for (std::size_t number = 0; number < 40; ++number) {
        unauthenticated += connections.isUnauthenticated(connection(number)) ? 1 : 0;
    }
    EXPECT_EQ(unauthenticated, 39U);
}

}  // namespace SettingsHandlerKit
