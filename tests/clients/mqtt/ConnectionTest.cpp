#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "FakeBroker.h"
#include "RunningBroker.h"
#include "mqtt/Connection.h"
#include "support/LineReader.h"
#include "support/ListeningSocket.h"

namespace MqttTest {

/// A connection whose loop is the test.
class ConnectionTest : public testing::Test, protected Mqtt::BrokerListener {
protected:
    void connectTo(const std::string& port) {
        Mqtt::ConnectionOptions options;
        options.address = "127.0.0.1";
        options.port = std::stoi(port);
        options.clientId = "client";
        options.lastWill = {"client/will", "gone"};
        options.firstPause = options.longestPause = 0.001;
        options.log = [this](int, const std::string& text) { log += text + '\n'; };
        connection.emplace(options);
        connection->listen(*this);
    }

    void turnUntil(const std::function<bool()>& isDone) {
        const auto end = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
        while (!isDone()) {
            const auto now = std::chrono::steady_clock::now();
            if (now > end) {
                throw std::runtime_error("it does not come; told: " + testing::PrintToString(told) + "; log: " + log);
            }
            const auto wanted = connection->wanted();
            pollfd watched{wanted.descriptor, wanted.events, 0};
            const bool isDue = wanted.time && *wanted.time <= now;
            ::poll(&watched, 1, isDue ? 0 : 1);
            if (isDue || watched.revents != 0) {
                connection->process(watched.revents);
            }
        }
    }
    void turnUntilLogged(const std::string& text) {
        turnUntil([&] { return log.find(text) != std::string::npos; });
    }
    void turnUntilTold(const std::string& line) {
        turnUntil([&] { return !told.empty() && told.back() == line; });
    }

    /// Accepts the connection, says `bytes` and nothing more.
    void answer(const TestSupport::PlainSocket& listener, const std::string& bytes) {
        pollfd watched{listener.get(), POLLIN, 0};
        turnUntil([&] { return ::poll(&watched, 1, 0) == 1; });
        const TestSupport::PlainSocket peer(::accept(listener.get(), nullptr, nullptr));
        EXPECT_EQ(::send(peer.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
        ::shutdown(peer.get(), SHUT_WR);
        log.clear();
        turnUntilLogged("next attempt");
    }

    void brokerConnected() override { told.emplace_back("connected"); }
    void brokerLost() override { told.emplace_back("lost"); }
    void received(const Mqtt::Message& message) override {
        told.push_back((message.retained ? "*" : "") + message.topic + " " + message.payload);
    }
    void acknowledged(int number) override { told.push_back("acknowledged " + std::to_string(number)); }

    std::string log;
    /// What the listener was told.
    Lines told;
    std::optional<Mqtt::Connection> connection;
};

TEST_F(ConnectionTest, SendsAndReceivesMessages) {
    const RunningBroker broker;
    publish(broker.port(), "kept", "1", {"-r"});
    connectTo(broker.port());
    turnUntilTold("connected");
    connection->subscribe({"kept", "new/+"});
    turnUntilTold("*kept 1");
    publish(broker.port(), "new/a", "2");
    turnUntilTold("new/a 2");
    const auto number = connection->publish({"other", "3"});
    turnUntilTold("acknowledged " + std::to_string(number.value()));
    EXPECT_EQ(told.size(), 4U);
}

TEST_F(ConnectionTest, StaysConnectedWhenAMessageIsTooLargeForTheBroker) {
    const RunningBroker broker({"allow_anonymous true", "max_packet_size 1000"});
    connectTo(broker.port());
    turnUntilTold("connected");
    EXPECT_FALSE(connection->publish({"large", std::string(1000, 'x')}));
    EXPECT_NE(log.find("dropped a message that is too large for the broker: large"), std::string::npos) << log;
    const auto number = connection->publish({"small", "x"});
    turnUntilTold("acknowledged " + std::to_string(number.value()));
    EXPECT_EQ(told.size(), 2U);
}

TEST_F(ConnectionTest, ConnectsAgainAfterTheBrokerWasKilled) {
    RunningBroker broker;
    connectTo(broker.port());
    turnUntilTold("connected");
    EXPECT_TRUE(connection->isConnected());
    broker.kill();
    turnUntilTold("lost");
    EXPECT_FALSE(connection->isConnected());
    broker.start();
    turnUntilTold("connected");
}

TEST_F(ConnectionTest, HasALastWillUnlessItTakesLeave) {
    const RunningBroker broker;
    Subscriber subscriber(broker.port(), {"client/will", "mark"});
    connectTo(broker.port());
    turnUntilTold("connected");
    connection->disconnect();
    connection.reset();
    publish(broker.port(), "mark", "left");
    told.clear();
    connectTo(broker.port());
    turnUntilTold("connected");
    connection.reset();
    EXPECT_EQ(subscriber.next(), "mark left");
    EXPECT_EQ(subscriber.next(), "client/will gone");
    publish(broker.port(), "mark", "lost");
    EXPECT_EQ(subscriber.next(), "mark lost");
}

TEST_F(ConnectionTest, OutlivesAPeerThatIsNoBroker) {
    const auto listener = TestSupport::listeningTcpSocket("127.0.0.1");
    connectTo(std::to_string(listener.port()));
    answer(listener, "HTTP/1.1 400\r\n\r\n");
    answer(listener, "\x20\xff\xff\xff\xff\xff");
    // Accepted, then a message of a topic that is none.
    answer(listener, std::string("\x20\x03\x00\x00\x00\x32\x0b\x00\x03\x61\x2b\xff\x00\x01\x00\x78\x78\x78", 18));
}

TEST_F(ConnectionTest, SaysWhenTheBrokerRefusesASubscription) {
    const auto listener = TestSupport::listeningTcpSocket("127.0.0.1");
    connectTo(std::to_string(listener.port()));
    // Accepted; the first subscription is granted, the other one is not authorized.
    answer(listener, std::string("\x20\x03\x00\x00\x00\x90\x05\x00\x01\x00\x01\x87", 12));
    EXPECT_EQ(told, (Lines{"connected", "lost"}));
    EXPECT_NE(log.find("the broker refused a subscription"), std::string::npos) << log;
}

}  // namespace MqttTest
