#include <csignal>
#include <thread>

#include <poll.h>

#include "kit/server/sockets/ListenerRecording.h"
#include "server/loop/EventLoop.h"
#include "server/loop/RepeatingTimer.h"
#include "server/sockets/UnixSocketListener.h"
#include "support/LineClient.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

class EventLoopTest : public ::testing::Test {
protected:
    EventLoopTest() {
        loop.onSignals({SIGUSR2}, [this] {
            ++signals;
            loop.stop();
        });
    }

    EventLoop loop;
    ListenerRecording clients;
    int signals = 0;
};

TEST_F(EventLoopTest, ASignalBeforeTheRunEndsIt) {
    TestSupport::TemporaryDirectory folder;
    UnixSocketListener listener(loop, folder / "listener.sock", Origin::SOCKET, clients);
    ::raise(SIGUSR2);
    loop.run();
    EXPECT_EQ(signals, 1);
}

TEST_F(EventLoopTest, DrainingEndsAtOnceWhenNothingIsOpen) {
    int givenUp = 0;
    loop.drain(3600000, [&] { ++givenUp; });
    EXPECT_EQ(givenUp, 1);
}

TEST_F(EventLoopTest, ASecondSignalEndsTheDrainOfAClientThatDoesNotRead) {
    TestSupport::TemporaryDirectory folder;
    const auto large = std::make_shared<const std::string>(900000, 'x');
    clients.onFrame = [&](const auto& client, const auto&) {
        client->send(large);
        loop.stop();
    };
    UnixSocketListener listener(loop, folder / "listener.sock", Origin::SOCKET, clients);
    TestSupport::LineClient stuck(folder / "listener.sock");
    stuck.sendLine("x");
    loop.run();
    listener.close();
    ::raise(SIGUSR2);
    loop.drain(3600000, [&] { listener.closeNow(); });
    EXPECT_EQ(signals, 1);
    EXPECT_LT(stuck.receiveAll().size(), large->size());
    EXPECT_TRUE(stuck.closedByPeer());
}

TEST_F(EventLoopTest, RunsALaterActionOnce) {
    std::vector<std::string> done;
    loop.later([&] {
        done.emplace_back("first");
        loop.later([&] {
            done.emplace_back("third");
            loop.stop();
        });
        done.emplace_back("second");
    });
    EXPECT_EQ(done, std::vector<std::string>{});
    loop.run();
    EXPECT_EQ(done, (std::vector<std::string>{"first", "second", "third"}));
}

TEST_F(EventLoopTest, RunsPostedActionsInTheirOrderWhateverTheThread) {
    TestSupport::TemporaryDirectory folder;
    const UnixSocketListener listener(loop, folder / "door.sock", Origin::SOCKET, clients);
    std::vector<std::string> done;
    std::thread([&] {
        loop.post([&] {
            done.emplace_back("first");
            loop.post([&] {
                done.emplace_back("third");
                loop.stop();
            });
        });
        loop.post([&] { done.emplace_back("second"); });
    }).join();
    EXPECT_TRUE(done.empty());
    loop.run();
    EXPECT_EQ(done, (std::vector<std::string>{"first", "second", "third"}));
}

TEST_F(EventLoopTest, IsTurnedBySomebodyElse) {
    TestSupport::TemporaryDirectory folder;
    EXPECT_FALSE(loop.turn()) << "nothing is open";
    const UnixSocketListener listener(loop, folder / "door.sock", Origin::SOCKET, clients);
    EXPECT_EQ(loop.timeout(), std::chrono::milliseconds(0)) << "the new socket is not watched yet";
    EXPECT_TRUE(loop.turn());
    EXPECT_EQ(loop.timeout(), std::nullopt);
    const auto isReadable = [&] {
        pollfd watched{loop.fileDescriptor(), POLLIN, 0};
        return ::poll(&watched, 1, 0) == 1;
    };
    EXPECT_FALSE(isReadable());
    bool isDone = false;
    loop.post([&] { isDone = true; });
    EXPECT_TRUE(isReadable());
    loop.turn();
    EXPECT_TRUE(isDone);
    EXPECT_FALSE(isReadable());
    const RepeatingTimer timer(loop, std::chrono::hours(1), std::chrono::hours(1), [] {});
    const auto atFirst = loop.timeout();
    EXPECT_GT(atFirst, std::chrono::minutes(59));
    const auto before = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - before < std::chrono::milliseconds(5)) {
    }
    EXPECT_LT(loop.timeout(), atFirst) << "the time between two turns counts";
}

TEST_F(EventLoopTest, ADestroyedLoopFinishesWhatIsOpenThoughItWasStopped) {
    bool isDone = false;
    {
        EventLoop other;
        other.later([&] { isDone = true; });
        other.stop();
    }
    EXPECT_TRUE(isDone);
}

}  // namespace SettingsHandlerKit
