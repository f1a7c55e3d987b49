#include <chrono>
#include <functional>
#include <optional>
#include <utility>

#include "kit/server/web/WebServerFixture.h"
#include "server/loop/RepeatingTimer.h"

namespace SettingsHandlerKit {

using TestSupport::WebSocket;

/// Pages that are sent something while nothing comes in. Timeouts are so long that nothing wakes the loop by itself.
class WebSocketClientTest : public WebServerTest {
protected:
    explicit WebSocketClientTest(std::size_t mayWait = Backlog::maximum) : WebServerTest(600, mayWait) {}

    /// Once a page has asked for it, has `action` done at every turn of the loop as long as the page is there; not at
    /// the first ones, because the library sleeps only a turn after it was called.
    void afterRequest(std::function<void(const std::shared_ptr<Client>& page)> action) {
        onFrame = [this, todo = std::move(action)](const auto& page, const auto&) {
            constexpr auto soon = std::chrono::milliseconds(1);
            turns.emplace(loop, soon, soon, [this, todo, page] {
                if (++turn > 2 && disconnections == 0) {
                    todo(page);
                    leftDuringSend += disconnections;
                }
            });
        };
    }

    int leftDuringSend = 0;

private:
    int turn = 0;
    std::optional<RepeatingTimer> turns;
};

TEST_F(WebSocketClientTest, AClientThatDoesNotReadIsDroppedThoughNothingComesIn) {
    const auto event = std::make_shared<const std::string>(10000, 'x');
    // Few at a time: the kernel takes the first ones bit by bit, and each time the library is called.
    afterRequest([&](const auto& page) { page->send(event); });
    WebSocket page(port, "/settings?key=thekey", "settings.v1", {}, 4096);
    page.sendText("x");
    waitFor([&] { return disconnections == 1; });
    stop();
    EXPECT_EQ(tooSlow, 1);
    EXPECT_EQ(leftDuringSend, 0) << "only the loop notifies";
}

TEST_F(WebSocketClientTest, AClientThatResetTheConnectionWasNotTooSlow) {
    WebSocket page(port, "/settings?key=thekey", "settings.v1");
    bool brokenOff = false;
    afterRequest([&](const auto& client) {
        if (!std::exchange(brokenOff, true)) {
            page.reset();
        }
        sendTo(client, "event");
    });
    page.sendText("x");
    waitFor([&] { return disconnections == 1; });
    stop();
    EXPECT_EQ(tooSlow, 0);
    EXPECT_EQ(leftDuringSend, 0) << "only the loop notifies";
}

TEST_F(WebSocketClientTest, AReadingClientMayBeSentAFrameOverTheLimitOfItsBacklogAndMoreFrames) {
    const std::string large(3 * maximumWaiting, 'l');
    onFrame = [&](const auto& page, const auto&) {
        sendTo(page, large);
        for (int number = 0; number < 100; ++number) {
            sendTo(page, std::to_string(number));
        }
    };
    WebSocket page(port, "/settings?key=thekey", "settings.v1");
    page.sendText("x");
    EXPECT_EQ(page.receiveText(), large);
    for (int number = 0; number < 100; ++number) {
        ASSERT_EQ(page.receiveText(), std::to_string(number));
    }
    EXPECT_EQ(tooSlow, 0);
}

TEST_F(WebSocketClientTest, FramesOfAllSizesComeWholeAndInOrder) {
    std::vector<std::string> frames;
    for (const std::size_t size : {0UL, 1UL, 16383UL, 16384UL, 16385UL, 32768UL, 65536UL, 65537UL, 300000UL}) {
        frames.emplace_back(size, static_cast<char>('a' + frames.size()));
    }
    // Once while it is answered, and then when the library sleeps.
    const auto sendAll = [&](const auto& page) {
        for (const auto& frame : frames) {
            sendTo(page, frame);
        }
    };
    onFrame = [&](const auto& page, const auto&) {
        sendAll(page);
        loop.later([page, sendAll] { sendAll(page); });
    };
    WebSocket page(port, "/settings?key=thekey", "settings.v1");
    page.sendText("x");
    for (int round = 0; round < 2; ++round) {
        for (const auto& frame : frames) {
            ASSERT_EQ(page.receiveText(), frame);
        }
    }
}

/// Pages that may let little wait together.
class BudgetedWebSocketClientTest : public WebSocketClientTest {
protected:
    BudgetedWebSocketClientTest() : WebSocketClientTest(400000) {}
};

TEST_F(BudgetedWebSocketClientTest, TheLargestBacklogIsDisconnectedAndTheReaderMissesNothing) {
    std::shared_ptr<Client> silent;
    std::shared_ptr<Client> reader;
    int round = 0;
    onFrame = [&](const auto& page, const auto& frame) {
        (frame == "silent" ? silent : reader) = page;
        if (frame == "more") {
            sendTo(silent, std::to_string(round) + std::string(20000, 's'));
        }
        sendTo(page, std::to_string(round++));
    };
    WebSocket slow(port, "/settings?key=thekey", "settings.v1", {}, 4096);
    slow.sendText("silent");
    ASSERT_EQ(slow.receiveText(), "0");
    WebSocket fast(port, "/settings?key=thekey", "settings.v1");
    int rounds = 1;
    for (; disconnections == 0 && rounds < 1000; ++rounds) {
        fast.sendText("more");
        ASSERT_EQ(fast.receiveText(), std::to_string(rounds));
    }
    EXPECT_EQ(tooSlow, 1);
    int expected = 1;
    while (const auto text = slow.receiveText()) {
        ASSERT_EQ(*text, std::to_string(expected) + std::string(20000, 's'));
        ++expected;
    }
    EXPECT_TRUE(slow.closedByPeer());
    EXPECT_LT(static_cast<std::size_t>(rounds) * 20000U, maximumWaiting) << "for itself it might have had more";
    EXPECT_EQ(disconnections, 1) << "the one who reads";
    stop();
}

TEST_F(BudgetedWebSocketClientTest, UnfinishedMessagesOfClientsCountToo) {
    std::vector<std::unique_ptr<WebSocket>> silent;
    for (int number = 0; number < 20; ++number) {
        silent.push_back(std::make_unique<WebSocket>(port, "/settings?key=thekey", "settings.v1"));
        silent.back()->sendFrame(1, std::string(60000, 'h'), false);
    }
    waitFor([&] { return disconnections > 0; });
    EXPECT_GT(tooSlow, 0);
    WebSocket reader(port, "/settings?key=thekey", "settings.v1");
    reader.sendText("x");
    EXPECT_EQ(reader.receiveText(), "<x>");
}

}  // namespace SettingsHandlerKit
