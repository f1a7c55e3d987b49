#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

#include <sys/socket.h>

#include "Wire/FrameInspector.h"
#include "kit/server/sockets/ListenerRecording.h"
#include "server/loop/UvHandle.h"
#include "server/sockets/UnixSocketListener.h"
#include "support/LineClient.h"
#include "support/Sanitizers.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

/// A listener that answers each frame, on a loop in its own thread.
class UnixSocketListenerTest : public ListenerTest<UnixSocketListener> {
protected:
    UnixSocketListenerTest() {
        serve(std::make_unique<UnixSocketListener>(loop, folder / "listener.sock", Origin::DEVICE, *this, backlog));
    }

    std::string socketPath() { return folder / "listener.sock"; }
};

TEST_F(UnixSocketListenerTest, AnswersFramesInOrder) {
    TestSupport::LineClient client(socketPath());
    client.send("one\n\ntwo\nthr");
    EXPECT_EQ(client.receiveLine(), "<one>");
    EXPECT_EQ(client.receiveLine(), "<two>");
    client.send("ee\n");
    EXPECT_EQ(client.receiveLine(), "<three>");
}

TEST_F(UnixSocketListenerTest, AClientThatStopsSendingGetsAllItsReplies) {
    TestSupport::LineClient client(socketPath());
    std::string frames;
    std::string answers;
    for (int number = 0; number < 2000; ++number) {
        frames += std::to_string(number) + "\n";
        answers += "<" + std::to_string(number) + ">\n";
    }
    client.send(frames + "unfinished");
    client.finishSending();
    EXPECT_EQ(client.receiveAll(), answers);
    waitFor([&] { return disconnections == 1; });
    EXPECT_EQ(tooSlow, 0);
}

TEST_F(UnixSocketListenerTest, FramesSentBeforeADisconnectAreHandled) {
    std::atomic<int> taken{0};
    // Set before the client comes, and the accept orders it before the first frame.
    onFrame = [&](const auto&, const auto&) { ++taken; };
    {
        TestSupport::LineClient client(socketPath());
        std::string frames;
        for (int number = 0; number < 5000; ++number) {
            frames += "frame\n";
        }
        client.send(frames);
    }
    waitFor([&] { return taken == 5000; });
    waitFor([&] { return disconnections == 1; });
}

TEST_F(UnixSocketListenerTest, AFrameOverTheLimitIsRefusedAndTheConnectionStaysOpen) {
    TestSupport::LineClient client(socketPath());
    const std::string exact(Wire::maximumFrameSize, 'x');
    client.send(exact + "\n" + exact + "y\nnext\n");
    EXPECT_EQ(client.receiveLine(), "<" + exact + ">");
    EXPECT_EQ(client.receiveLine(), "TOO LARGE");
    EXPECT_EQ(client.receiveLine(), "<next>");
}

TEST_F(UnixSocketListenerTest, ABurstDoesNotDelayOtherClients) {
    std::atomic<int> stormFrames{0};
    std::atomic<bool> calmHasAsked{false};
    onFrame = [&](const auto& client, const auto& frame) {
        if (frame != "storm") {
            sendTo(client, std::to_string(stormFrames));
        } else if (++stormFrames == 1) {
            // Until the question waits, too.
            waitFor([&] { return calmHasAsked.load(); });
        }
    };
    TestSupport::LineClient storm(socketPath());
    TestSupport::LineClient calm(socketPath());
    calm.sendLine("here");
    ASSERT_EQ(calm.receiveLine(), "0");
    std::string frames;
    for (int number = 0; number < 100000; ++number) {
        frames += "storm\n";
    }
    std::thread sender([&] { storm.send(frames); });
    waitFor([&] { return stormFrames > 0; });
    calm.sendLine("now");
    calmHasAsked = true;
    const auto answer = calm.receiveLine();
    ASSERT_TRUE(answer);
    EXPECT_LE(std::stoul(*answer), 3 * framesPerTurn);
    sender.join();
    waitFor([&] { return stormFrames == 100000; });
}

TEST_F(UnixSocketListenerTest, ATurnOfSlowFramesIsOneFrame) {
    std::atomic<int> stormFrames{0};
    std::atomic<bool> calmHasAsked{false};
    onFrame = [&](const auto& client, const auto& frame) {
        if (frame == "calm") {
            sendTo(client, std::to_string(stormFrames));
            return;
        }
        // The first goes on until the calm client's frame waits, too.
        waitFor([&] { return calmHasAsked.load(); });
        std::this_thread::sleep_for(2 * longestTurn);
        ++stormFrames;
    };
    TestSupport::LineClient calm(socketPath());
    TestSupport::LineClient storm(socketPath());
    waitFor([&] { return connections == 2; });
    storm.send("a\nb\nc\nd\ne\nf\ng\nh\n");
    calm.sendLine("calm");
    calmHasAsked = true;
    // In either order, the burst had no more than its current frame and one turn after it.
    EXPECT_LE(std::stoi(calm.receiveLine().value_or("99")), 2);
    waitFor([&] { return stormFrames == 8; });
}

TEST_F(UnixSocketListenerTest, AClientThatDoesNotReadIsDisconnectedWithoutAGap) {
    const auto frame = std::make_shared<const std::string>(std::string(10000, 'e'));
    std::atomic<int> sent{0};
    std::atomic<int> leftDuringSend{-1};
    onFrame = [&](const auto& asking, const auto&) {
        const auto flooded = clients;
        for (int number = 0; number < 400; ++number) {
            for (const auto& client : flooded) {
                if (client != asking) {
                    client->send(std::make_shared<const std::string>(std::to_string(number) + " " + *frame));
                }
            }
            ++sent;
        }
        leftDuringSend = disconnections.load();
        sendTo(asking, "sent");
    };
    TestSupport::LineClient slow(socketPath());
    waitFor([&] { return connections == 1; });
    TestSupport::LineClient asking(socketPath());
    asking.sendLine("flood");
    EXPECT_EQ(asking.receiveLine(), "sent");
    waitFor([&] { return disconnections == 1; });
    EXPECT_EQ(tooSlow, 1);
    EXPECT_EQ(leftDuringSend, 0) << "only the loop notifies";
    int expected = 0;
    while (const auto line = slow.receiveLine()) {
        ASSERT_EQ(*line, std::to_string(expected) + " " + *frame);
        ++expected;
    }
    EXPECT_TRUE(slow.closedByPeer());
    EXPECT_LT(expected, 400);
    EXPECT_GT(expected * 10000, 100000) << "it was given a chance";
}

TEST_F(UnixSocketListenerTest, AReadingClientMayBeSentAFrameOverTheLimitOfItsBacklogAndMoreFrames) {
    const std::string large(3 * maximumWaiting, 'l');
    onFrame = [&](const auto& client, const auto&) {
        sendTo(client, large);
        for (int number = 0; number < 100; ++number) {
            sendTo(client, std::to_string(number));
        }
    };
    TestSupport::LineClient client(socketPath());
    client.sendLine("x");
    EXPECT_EQ(client.receiveLine(), large);
    for (int number = 0; number < 100; ++number) {
        ASSERT_EQ(client.receiveLine(), std::to_string(number));
    }
    EXPECT_EQ(tooSlow, 0);
}

TEST_F(UnixSocketListenerTest, OfAClientThatDoesNotReadNoMoreThanABufferIsRead) {
    constexpr std::size_t tooMuch = 1024UL * 1024UL;
    constexpr int smallBuffer = 4096;
    const std::string answer(20000, 'a');
    // A copy, since frames are taken until the listener is closed.
    onFrame = [answer](const auto& client, const auto& frame) { sendTo(client, frame == "ping" ? "pong" : answer); };
    TestSupport::LineClient other(socketPath());
    const auto afterTurnsOfTheLoop = [&](int turns) {
        for (int turn = 0; turn < turns; ++turn) {
            other.sendLine("ping");
            ASSERT_EQ(other.receiveLine(), "pong");
        }
    };
    TestSupport::LineClient silent(socketPath());
    ::setsockopt(silent.descriptor(), SOL_SOCKET, SO_SNDBUF, &smallBuffer, sizeof(smallBuffer));
    // A few at a time, until more waits than may be unread.
    for (int number = 0; number < 30; ++number) {
        silent.send("x\n");
        afterTurnsOfTheLoop(1);
    }
    const std::string piece = std::string(99, 'y') + "\n";
    std::size_t taken = 0;
    const auto sendWhatIsTaken = [&] {
        while (taken<tooMuch&& ::send(silent.descriptor(), piece.data(), piece.size(), MSG_DONTWAIT)> 0) {
            taken += piece.size();
        }
    };
    for (std::size_t before = 1; taken != before && taken < tooMuch;) {
        before = taken;
        sendWhatIsTaken();
        afterTurnsOfTheLoop(3);
    }
    EXPECT_LT(taken, 2 * Wire::maximumFrameSize);
    // Nor is it read a byte a turn.
    const std::size_t before = taken;
    afterTurnsOfTheLoop(1000);
    sendWhatIsTaken();
    EXPECT_EQ(taken, before);
    EXPECT_EQ(disconnections, 0);
}

TEST_F(UnixSocketListenerTest, ALongBurstGetsNoMoreTurnsThanAShortOne) {
    /// Frames that came between two moments at which the loop looks for something to read.
    class Rounds : public UvHandle<uv_prepare_t, Rounds> {
    public:
        void start() {
            uv_prepare_start(get(), [](uv_prepare_t* prepare) { ownerOf(prepare).frames = 0; });
        }
        std::size_t frames = 0;
    };
    constexpr int stormFrames = TestSupport::sanitized ? 20000 : 200000;
    std::shared_ptr<Rounds> rounds;
    std::size_t mostAtOnce = 0;
    std::atomic<int> taken{0};
    onFrame = [&](const auto&, const auto&) {
        if (!rounds) {
            rounds = std::make_shared<Rounds>();
            uv_prepare_init(loop.handle(), rounds->get());
            rounds->opened(rounds);
            rounds->start();
        }
        mostAtOnce = std::max(mostAtOnce, ++rounds->frames);
        if (taken + 1 == stormFrames) {
            rounds->closeHandle();
        }
        ++taken;
    };
    TestSupport::LineClient storm(socketPath());
    std::string frames;
    for (int number = 0; number < stormFrames; ++number) {
        frames += "s\n";
    }
    storm.send(frames);
    waitFor([&] { return taken == stormFrames; });
    stop();
    // One turn for what was read, one for what was left of it.
    EXPECT_LE(mostAtOnce, 2 * framesPerTurn);
}

TEST_F(UnixSocketListenerTest, FramesOfAllSizesComeWholeAndInOrderToAllLateReaders) {
    std::vector<std::string> frames;
    for (int number = 0; number < 5; ++number) {
        for (const std::size_t size : {1UL, 30000UL, Wire::maximumFrameSize, Wire::maximumFrameSize + 1}) {
            frames.emplace_back(size, static_cast<char>('a' + frames.size()));
        }
    }
    onFrame = [&](const auto&, const auto&) {
        for (const auto& frame : frames) {
            const auto shared = std::make_shared<const std::string>(frame);
            for (const auto& client : clients) {
                client->send(shared);
            }
        }
    };
    std::vector<std::unique_ptr<TestSupport::LineClient>> readers;
    for (int number = 0; number < 3; ++number) {
        readers.push_back(std::make_unique<TestSupport::LineClient>(socketPath()));
    }
    waitFor([&] { return connections == 3; });
    readers.front()->sendLine("now");
    for (const auto& reader : readers) {
        for (const auto& frame : frames) {
            ASSERT_EQ(reader->receiveLine(), frame);
        }
    }
}

TEST_F(UnixSocketListenerTest, AClientMaySendManyRequestsBeforeItReads) {
    const std::string answer(5000, 'a');
    onFrame = [&](const auto& client, const auto& frame) { sendTo(client, frame + answer); };
    TestSupport::LineClient client(socketPath());
    std::string frames;
    for (int number = 0; number < 1000; ++number) {
        frames += std::to_string(number) + "\n";
    }
    client.send(frames);
    client.finishSending();
    for (int number = 0; number < 1000; ++number) {
        ASSERT_EQ(client.receiveLine(), std::to_string(number) + answer);
    }
    EXPECT_FALSE(client.receiveLine());
    EXPECT_TRUE(client.closedByPeer());
}

TEST_F(UnixSocketListenerTest, RequestsAreHandledEvenIfTheClientDisconnectsWithoutReading) {
    std::atomic<int> taken{0};
    onFrame = [&](const auto& client, const auto&) {
        ++taken;
        sendTo(client, std::string(5000, 'a'));
    };
    {
        TestSupport::LineClient client(socketPath());
        std::string frames;
        for (int number = 0; number < 1000; ++number) {
            frames += "frame\n";
        }
        client.send(frames);
    }
    waitFor([&] { return taken == 1000; });
    waitFor([&] { return disconnections == 1; });
}

TEST_F(UnixSocketListenerTest, StoppingDrainsClientsAndRemovesTheSocket) {
    onFrame = [&](const auto& client, const auto&) { sendTo(client, std::string(500000, 'x')); };
    TestSupport::LineClient client(socketPath());
    client.sendLine("x");
    waitFor([&] { return connections == 1; });
    char byte = 0;
    ASSERT_EQ(::recv(client.descriptor(), &byte, 1, MSG_PEEK), 1);
    std::string rest;
    std::thread reader([&] { rest = client.receiveAll(); });
    stop();
    reader.join();
    EXPECT_EQ(rest.size(), 500001U);
    EXPECT_FALSE(std::filesystem::exists(socketPath()));
}

TEST_F(UnixSocketListenerTest, StoppingDoesNotWaitForAClientThatDoesNotRead) {
    onFrame = [&](const auto& client, const auto&) { sendTo(client, std::string(900000, 'x')); };
    TestSupport::LineClient client(socketPath());
    client.sendLine("x");
    char byte = 0;
    ASSERT_EQ(::recv(client.descriptor(), &byte, 1, MSG_PEEK), 1);
    stop();
    EXPECT_LT(client.receiveAll().size(), 900000U);
}

TEST_F(UnixSocketListenerTest, ClientsOverTheLimitAreRefusedUntilOneDisconnects) {
    const std::string refusal =
        R"({"error":{"code":"too-many-clients","message":"the host has reached its limit of clients"}})"
        "\n";
    std::vector<std::unique_ptr<TestSupport::LineClient>> connected;
    for (std::size_t number = 0; number < maximumClients; ++number) {
        connected.push_back(std::make_unique<TestSupport::LineClient>(socketPath()));
    }
    for (int number = 1; number <= 20; ++number) {
        TestSupport::LineClient outside(socketPath());
        outside.sendLine("x");
        ASSERT_EQ(outside.receiveAll(), refusal);
        EXPECT_TRUE(outside.closedByPeer());
        EXPECT_EQ(refusedConnections, number);
    }
    EXPECT_EQ(connections, static_cast<int>(maximumClients));
    for (const auto& client : connected) {
        client->sendLine("x");
        EXPECT_EQ(client->receiveLine(), "<x>");
    }
    connected.pop_back();
    waitFor([&] { return disconnections == 1; });
    connected.push_back(std::make_unique<TestSupport::LineClient>(socketPath()));
    connected.back()->sendLine("y");
    EXPECT_EQ(connected.back()->receiveLine(), "<y>");
}

TEST_F(UnixSocketListenerTest, ManyClientsComeAndGo) {
    for (int round = 0; round < 3; ++round) {
        std::vector<std::unique_ptr<TestSupport::LineClient>> many;
        for (int number = 0; number < 100; ++number) {
            many.push_back(std::make_unique<TestSupport::LineClient>(socketPath()));
            many.back()->sendLine(std::to_string(number));
        }
        for (int number = 0; number < 100; ++number) {
            EXPECT_EQ(many[static_cast<std::size_t>(number)]->receiveLine(), "<" + std::to_string(number) + ">");
        }
    }
    waitFor([&] { return disconnections == 300; });
}

}  // namespace SettingsHandlerKit
