#include <array>
#include <chrono>
#include <ctime>
#include <thread>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include "SettingsHandlerKit/ListenerError.h"
#include "server/loop/RepeatingTimer.h"
#include "server/sockets/TcpListener.h"
#include "support/ListeningSocket.h"
#include "support/Sanitizers.h"
#include "support/WebClient.h"

namespace SettingsHandlerKit {

class TcpListenerTest : public ::testing::Test {
protected:
    /// Takes `count` connections, then stops the loop.
    void startTaking(TcpListener& listener, std::size_t count) {
        listener.start(
            loop,
            [this, count](int descriptor) {
                taken.push_back(descriptor);
                if (taken.size() == count) {
                    loop.stop();
                }
            },
            [this](int /*descriptor*/) { ++refused; });
    }

    ~TcpListenerTest() override {
        for (const int descriptor : taken) {
            ::close(descriptor);
        }
    }

    EventLoop loop;
    std::vector<int> taken;
    int refused = 0;
};

TEST_F(TcpListenerTest, ConnectionsBeforeTheStartWait) {
    TcpListener listener("127.0.0.1", 0);
    TestSupport::TcpConnection early(listener.port());
    early.send("x");
    startTaking(listener, 1);
    loop.run();
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_EQ(::send(taken[0], "hello", 5, 0), 5);
    EXPECT_EQ(early.receive(5), "hello");
    const int descriptor = taken[0];
    EXPECT_NE(::fcntl(descriptor, F_GETFL) & O_NONBLOCK, 0);
    EXPECT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(TcpListenerTest, ConnectionsSendWithoutDelayAlsoThoseOfAPassedSocket) {
    TcpListener own("127.0.0.1", 0);
    auto socket = TestSupport::listeningTcpSocket("127.0.0.1");
    TcpListener passed{Descriptor(::dup(socket.get()))};
    for (TcpListener* listener : {&own, &passed}) {
        taken.clear();
        TestSupport::TcpConnection client(listener->port());
        client.send("x");
        startTaking(*listener, 1);
        loop.run();
        ASSERT_EQ(taken.size(), 1U);
        int noDelay = 0;
        socklen_t size = sizeof(noDelay);
        EXPECT_EQ(::getsockopt(taken[0], IPPROTO_TCP, TCP_NODELAY, &noDelay, &size), 0);
        EXPECT_EQ(noDelay, 1);
        ::close(taken[0]);
        taken.clear();
        listener->close();
    }
}

TEST_F(TcpListenerTest, ConnectionsAreAcceptedInTheOrderInWhichTheySendAndManyAtATime) {
    TcpListener listener("127.0.0.1", 0);
    constexpr std::size_t evictions = 300;
    std::vector<std::unique_ptr<TestSupport::TcpConnection>> clients;
    for (std::size_t number = 0; number < evictions; ++number) {
        clients.push_back(std::make_unique<TestSupport::TcpConnection>(listener.port()));
    }
    for (std::size_t number = evictions; number-- > 0;) {
        clients[number]->send(std::to_string(number) + "\n");
    }
    // More than the kernel keeps for a listener that does not say how many may wait.
    startTaking(listener, evictions);
    int turns = 0;
    RepeatingTimer counter(loop, std::chrono::milliseconds(0), std::chrono::milliseconds(1), [&] { ++turns; });
    loop.run();
    ASSERT_EQ(taken.size(), evictions);
    for (std::size_t number = 0; number < evictions; ++number) {
        std::array<char, 16> text{};
        EXPECT_GT(::recv(taken[number], text.data(), text.size(), 0), 0);
        EXPECT_EQ(std::stoul(text.data()), evictions - 1 - number);
    }
    EXPECT_LT(turns, static_cast<int>(evictions));
}

TEST_F(TcpListenerTest, APortInUseIsRefusedWithAMessageAndFreeAfterTheClose) {
    std::uint16_t port = 0;
    {
        TcpListener listener("127.0.0.1", 0);
        port = listener.port();
        try {
            TcpListener second("127.0.0.1", port);
            ADD_FAILURE() << "two listeners at one port";
        } catch (const ListenerError& error) {
            EXPECT_EQ(error.what(),
                      "cannot listen at 127.0.0.1 port " + std::to_string(port) + ": Address already in use");
        }
        startTaking(listener, 1);
        TestSupport::TcpConnection client(port);
        client.send("x");
        loop.run();
        ::close(taken[0]);
        taken.clear();
    }
    EXPECT_NO_THROW(TcpListener("127.0.0.1", port));
    EXPECT_THROW(TcpListener("here", port), ListenerError);
}

TEST_F(TcpListenerTest, AtTheDescriptorLimitConnectionsAreRefusedAndTheNextIsServed) {
    if (TestSupport::sanitizersNeedDescriptors) {
        GTEST_SKIP();
    }
    TcpListener listener("127.0.0.1", 0);
    startTaking(listener, 1);
    TestSupport::TcpConnection last(listener.port());
    last.send("x");
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
    EXPECT_EQ(last.receiveAll(), "");
    EXPECT_TRUE(last.closedByPeer());
    TestSupport::TcpConnection next(listener.port());
    next.send("x");
    loop.run();
    EXPECT_EQ(taken.size(), 1U);
}

TEST_F(TcpListenerTest, WithoutTheSpareDescriptorConnectionsWaitAndTheLoopSleeps) {
    if (TestSupport::sanitizersNeedDescriptors) {
        GTEST_SKIP();
    }
    TcpListener listener("127.0.0.1", 0);
    startTaking(listener, 1);
    TestSupport::TcpConnection waits(listener.port());
    waits.send("x");
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

}  // namespace SettingsHandlerKit
