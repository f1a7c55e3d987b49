#include <map>

#include "kit/server/sockets/ListenerRecording.h"
#include "server/sockets/UnixSocketListener.h"
#include "support/LineClient.h"

namespace SettingsHandlerKit {

/// A listener whose clients may let little wait together. They say their names first.
class BudgetedUnixSocketListenerTest : public ListenerTest<UnixSocketListener> {
protected:
    BudgetedUnixSocketListenerTest() {
        backlog = std::make_shared<Backlog>(400000);
        serve(std::make_unique<UnixSocketListener>(loop, folder / "listener.sock", Origin::DEVICE, *this, backlog));
    }

    void disconnected(const std::shared_ptr<Client>& client, DisconnectReason reason) override {
        departures += names[client] + (reason == DisconnectReason::TOO_SLOW ? " too slow, " : " closed, ");
        ListenerRecording::disconnected(client, reason);
    }
    void received(const std::shared_ptr<Client>& client, const std::string& frame) override {
        if (names[client].empty()) {
            names[client] = frame;
            sendTo(client, "hello " + frame);
        } else {
            ListenerRecording::received(client, frame);
        }
    }

    std::unique_ptr<TestSupport::LineClient> connect(const std::string& name) {
        auto client = std::make_unique<TestSupport::LineClient>(folder / "listener.sock");
        client->sendLine(name);
        EXPECT_EQ(client->receiveLine(), "hello " + name);
        return client;
    }

    std::map<std::shared_ptr<Client>, std::string> names;
    std::string departures;
};

TEST_F(BudgetedUnixSocketListenerTest, TheLargestBacklogsAreDisconnectedFirstAndTheReaderMissesNothing) {
    const std::map<std::string, std::size_t> sizes{{"much", 30000}, {"most", 40000}, {"little", 20000}, {"reader", 10}};
    const auto frameOf = [&](const std::string& name, int number) {
        return std::to_string(number) + std::string(sizes.at(name), name.back());
    };
    int round = 0;
    onFrame = [&](const auto&, const auto&) {
        for (const auto& client : std::vector<std::shared_ptr<Client>>(clients)) {
            sendTo(client, frameOf(names[client], round));
        }
        ++round;
    };
    std::map<std::string, std::unique_ptr<TestSupport::LineClient>> silent;
    for (const auto* name : {"much", "most", "little"}) {
        silent[name] = connect(name);
    }
    const auto reader = connect("reader");
    // So few that nobody has more waiting than a client may have for itself.
    constexpr int rounds = 26;
    for (int number = 0; number < rounds; ++number) {
        reader->sendLine("go on");
        ASSERT_EQ(reader->receiveLine(), frameOf("reader", number));
    }
    waitFor([&] { return disconnections == 3; });
    for (const auto& [name, client] : silent) {
        int expected = 0;
        while (const auto line = client->receiveLine()) {
            ASSERT_EQ(*line, frameOf(name, expected));
            ++expected;
        }
        EXPECT_TRUE(client->closedByPeer());
        EXPECT_GT(expected, 1);
        EXPECT_LT(expected, rounds);
    }
    stop();
    EXPECT_EQ(departures, "most too slow, much too slow, little too slow, reader closed, ");
    EXPECT_EQ(backlog->size(), 0U);
}

TEST_F(BudgetedUnixSocketListenerTest, UnfinishedFramesOfClientsCountToo) {
    onFrame = [&](const auto& client, const auto&) { sendTo(client, "here"); };
    std::vector<std::unique_ptr<TestSupport::LineClient>> silent;
    for (int number = 0; number < 30; ++number) {
        silent.push_back(connect(std::to_string(number)));
        silent.back()->send(std::string(60000, 'h'));
    }
    const auto reader = connect("reader");
    waitFor([&] { return disconnections >= 20; });
    reader->sendLine("x");
    EXPECT_EQ(reader->receiveLine(), "here");
    stop();
    EXPECT_GE(tooSlow, 20);
    EXPECT_LT(tooSlow, 30);
}

}  // namespace SettingsHandlerKit
