#include <future>

#include "kit/server/web/WebServerFixture.h"
#include "kit/support/LogRecording.h"

namespace SettingsHandlerKit {

using TestSupport::httpGet;
using TestSupport::TcpConnection;
using TestSupport::WebSocket;

/// Connections without key or cookie. Its timeouts are so long that none of them expires.
class UnauthenticatedConnectionsTest : public WebServerTest {
protected:
    UnauthenticatedConnectionsTest() : WebServerTest(600) {}
    void TearDown() override {
        release();
        WebServerTest::TearDown();
    }

    /// One that has begun a request, and so is not left with the kernel.
    std::unique_ptr<TcpConnection> unauthenticated(const std::string& beginning = "GET ") {
        auto connection = std::make_unique<TcpConnection>(port);
        connection->send(beginning);
        return connection;
    }

    std::vector<std::unique_ptr<TcpConnection>> unauthenticated(std::size_t count) {
        std::vector<std::unique_ptr<TcpConnection>> evictions;
        while (evictions.size() < count) {
            evictions.push_back(unauthenticated());
        }
        return evictions;
    }

    /// Keeps the loop busy until `release`: what comes meanwhile waits for it. The request that does it shows the key.
    void hold() {
        onOpen = [this, busy = &isBusy, free = isFree.get_future().share()] {
            if (!wasBusy.exchange(true)) {
                busy->set_value();
                free.wait();
            }
        };
        asking = std::make_unique<TcpConnection>(port);
        asking->send("GET /open?key=thekey HTTP/1.1\r\n" + host() + "\r\n");
        isBusy.get_future().wait();
    }
    void release() {
        if (asking && !released.exchange(true)) {
            isFree.set_value();
        }
    }

    static void expectClosed(TcpConnection& connection) {
        EXPECT_EQ(connection.receiveAll(), "");
        EXPECT_TRUE(connection.closedByPeer());
    }

    static constexpr std::size_t places = WebConnections::maximumUnauthenticated;
    /// Alone in the log at level 2.
    SettingsHostTests::LogRecording log;

private:
    std::promise<void> isBusy;
    std::promise<void> isFree;
    std::atomic<bool> wasBusy{false};
    std::atomic<bool> released{false};
    std::unique_ptr<TcpConnection> asking;
};

TEST_F(UnauthenticatedConnectionsTest, ThereAreThirtyTwoAndTheOldestMakesRoom) {
    auto evictions = unauthenticated(places);
    auto next = unauthenticated();
    expectClosed(*evictions[0]);
    auto afterNext = unauthenticated();
    expectClosed(*evictions[1]);
    waitFor([&] { return refusedConnections == 2; });
    // The others are still there: they finish their requests.
    for (std::size_t number = 2; number < places; ++number) {
        EXPECT_EQ(askHttp(*evictions[number], "/open HTTP/1.1\r\n" + host()).status, 503) << number;
    }
    EXPECT_EQ(askHttp(*next, "/open HTTP/1.1\r\n" + host()).status, 503);
    EXPECT_EQ(askHttp(*afterNext, "/open HTTP/1.1\r\n" + host()).status, 503);
    EXPECT_EQ(refusedConnections, 2);
}

TEST_F(UnauthenticatedConnectionsTest, ReadsPendingInputOfTheOldestBeforeClosingIt) {
    auto page = unauthenticated("GET /large.js?key=thekey HTTP/1.1\r\n");
    auto asksInVain = unauthenticated("GET /?key=thekex HTTP/1.1\r\n");
    auto socket = unauthenticated("GET /settings?key=thekey HTTP/1.1\r\n");
    // Only when their places in the list are certain.
    auto first = unauthenticated(places - 4);
    waitFor([&] { return httpGet(port, "/open?key=thekey").status == 503; });
    hold();
    auto evictions = unauthenticated(places);
    const std::string rest = host() + "\r\n";
    asksInVain->send(rest);
    page->send(rest);
    socket->send(host() +
                 "Connection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
                 "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Protocol: settings.v1\r\n\r\n" +
                 WebSocket::frameBytes(1, "hello", true));
    release();
    EXPECT_EQ(askHttp(*page, "").body.size(), 300000U);
    EXPECT_NE(asksInVain->receiveAll().find("The key is missing or old."), std::string::npos);
    EXPECT_TRUE(asksInVain->closedByPeer());
    EXPECT_TRUE(socket->receiveUntil("\r\n\r\n"));
    EXPECT_EQ(socket->receive(9), "\x81\x07<hello>");
}

TEST_F(UnauthenticatedConnectionsTest, AConnectionThatHasShownKeyOrCookieIsNotEvicted) {
    TcpConnection withKey(port);
    EXPECT_EQ(askHttp(withKey, "GET /?key=thekey HTTP/1.1\r\n" + host()).status, 200);
    TcpConnection withCookie(port);
    EXPECT_EQ(askHttp(withCookie, "GET /none HTTP/1.1\r\n" + host() + cookie() + "\r\n").status, 404);
    TcpConnection endpoint(port);
    EXPECT_EQ(askHttp(endpoint, "GET /open HTTP/1.1\r\n" + host()).status, 503);
    TcpConnection refused(port);
    EXPECT_EQ(askHttp(refused, "GET / HTTP/1.1\r\n" + host()).status, 403);
    WebSocket socket(port, "/settings?key=thekey", "settings.v1");
    const auto evictions = unauthenticated(3 * places);
    waitFor([&] { return refusedConnections == 2 + 2 * static_cast<int>(places); });
    expectClosed(endpoint);
    expectClosed(refused);
    EXPECT_EQ(askHttp(withKey, "GET / HTTP/1.1\r\n" + host()).status, 403)
        << "it is there, though it shows nothing now";
    EXPECT_EQ(askHttp(withCookie, "GET / HTTP/1.1\r\n" + host() + cookie() + "\r\n").status, 200);
    socket.sendText("x");
    EXPECT_EQ(socket.receiveText(), "<x>");
}

TEST_F(UnauthenticatedConnectionsTest, ANewConnectionIsClosedWhenAllOthersAreAuthenticated) {
    std::vector<std::unique_ptr<WebSocket>> sockets;
    while (sockets.size() < maximumClients) {
        sockets.push_back(std::make_unique<WebSocket>(port, "/settings?key=thekey", "settings.v1"));
        ASSERT_EQ(sockets.back()->status(), 101) << sockets.size();
    }
    expectClosed(*unauthenticated());
    waitFor([&] { return refusedConnections == 1; });
    sockets.pop_back();
    waitFor([&] { return disconnections == 1; });
    waitFor([&] { return httpGet(port, "/open").status == 503; });
    for (const auto& socket : sockets) {
        socket->sendText("x");
        EXPECT_EQ(socket->receiveText(), "<x>");
    }
}

TEST_F(UnauthenticatedConnectionsTest, AConnectionThatDoesNotReadItsAnswersIsEvicted) {
    std::vector<std::unique_ptr<TcpConnection>> deaf;
    // More answers than the kernel keeps for it.
    std::string requests;
    for (int number = 0; number < 50; ++number) {
        requests += "GET /long HTTP/1.1\r\n" + host() + "\r\n";
    }
    for (std::size_t number = 0; number < 3 * maximumClients; ++number) {
        deaf.push_back(std::make_unique<TcpConnection>(port, 2048));
        deaf.back()->send(requests);
        if (number % 16 == 0) {
            EXPECT_EQ(httpGet(port, "/?key=thekey").status, 200) << number;
        }
    }
    EXPECT_EQ(httpGet(port, "/?key=thekey").status, 200);
}

TEST_F(UnauthenticatedConnectionsTest, ManyEvictionsAreLoggedInOneLine) {
    const auto evictions = unauthenticated(10 * places);
    waitFor([&] { return refusedConnections == 9 * static_cast<int>(places); });
    stop();
    std::vector<std::string> warnings;
    for (const auto& line : log.take()) {
        if (line.find("unauthenticated") != std::string::npos) {
            warnings.push_back(line);
        }
    }
    EXPECT_EQ(warnings, std::vector<std::string>{
                            "2 settings-host:web: unauthenticated connections closed to make room for others: 1"});
}

}  // namespace SettingsHandlerKit
