#include <chrono>
#include <ctime>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/Sanitizers.h"
#include "support/WebClient.h"
#include "transport/DoorError.h"
#include "transport/TcpDoor.h"

namespace SettingsHost {

class TcpDoorTest : public ::testing::Test {
protected:
    /// Takes `count` connections, then stops the loop.
    void startTaking(TcpDoor& door, std::size_t count) {
        door.start(
            loop,
            [this, count](int descriptor) {
                taken.push_back(descriptor);
                if (taken.size() == count) {
                    loop.stop();
                }
            },
            [this](int /*descriptor*/) { ++refused; });
    }

    ~TcpDoorTest() override {
        for (const int descriptor : taken) {
            ::close(descriptor);
        }
    }

    EventLoop loop;
    std::vector<int> taken;
    int refused = 0;
};

TEST_F(TcpDoorTest, ConnectionsThatCameBeforeTheStartWait) {
    TcpDoor door("127.0.0.1", 0);
    TestSupport::TcpConnection early(door.port());
    startTaking(door, 1);
    loop.run();
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_EQ(::send(taken[0], "hello", 5, 0), 5);
    EXPECT_EQ(early.receive(5), "hello");
    const int descriptor = taken[0];
    EXPECT_NE(::fcntl(descriptor, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(TcpDoorTest, ATakenPortIsRefusedInWordsAndFreeAgainAfterTheClose) {
    std::uint16_t port = 0;
    {
        TcpDoor door("127.0.0.1", 0);
        port = door.port();
        try {
            TcpDoor second("127.0.0.1", port);
            ADD_FAILURE() << "two doors at one port";
        } catch (const DoorError& error) {
            EXPECT_EQ(error.what(),
                      "cannot listen at 127.0.0.1 port " + std::to_string(port) + ": Address already in use");
        }
        startTaking(door, 1);
        TestSupport::TcpConnection client(port);
        loop.run();
        ::close(taken[0]);
        taken.clear();
    }
    EXPECT_NO_THROW(TcpDoor("127.0.0.1", port));
    EXPECT_THROW(TcpDoor("here", port), DoorError);
}

TEST_F(TcpDoorTest, AtTheDescriptorLimitConnectionsAreTurnedAwayAndTheNextIsServed) {
    if (TestSupport::sanitizersNeedDescriptors) {
        GTEST_SKIP();
    }
    TcpDoor door("127.0.0.1", 0);
    startTaking(door, 1);
    TestSupport::TcpConnection turnedAway(door.port());
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const int highest = ::dup(0);
    ::close(highest);
    const rlimit tight{static_cast<rlim_t>(highest), before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &tight), 0);
    loop.later([&] { loop.later([&] { loop.stop(); }); });
    loop.run();
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_TRUE(taken.empty());
    EXPECT_EQ(refused, 1);
    EXPECT_EQ(turnedAway.receiveAll(), "");
    EXPECT_TRUE(turnedAway.closedByPeer());
    TestSupport::TcpConnection next(door.port());
    loop.run();
    EXPECT_EQ(taken.size(), 1U);
}

TEST_F(TcpDoorTest, WhenNotEvenTheSpareDescriptorHelpsConnectionsWaitAndTheLoopSleeps) {
    if (TestSupport::sanitizersNeedDescriptors) {
        GTEST_SKIP();
    }
    TcpDoor door("127.0.0.1", 0);
    startTaking(door, 1);
    TestSupport::TcpConnection waits(door.port());
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t used = std::clock();
    std::thread relief([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(5 * Acceptor::pauseMilliseconds));
        ::setrlimit(RLIMIT_NOFILE, &before);
    });
    loop.run();
    relief.join();
    const auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(static_cast<double>(std::clock() - used) / CLOCKS_PER_SEC, seconds / 2) << "the loop never slept";
    EXPECT_EQ(refused, 0);
    EXPECT_EQ(taken.size(), 1U) << "it was served when there was room again";
}

}  // namespace SettingsHost
