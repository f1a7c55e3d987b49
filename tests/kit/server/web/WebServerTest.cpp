#include <fstream>
#include <thread>

#include <unistd.h>

#include "Wire/FrameInspector.h"
#include "kit/server/web/WebServerFixture.h"
#include "support/ProcessUsage.h"

namespace SettingsHandlerKit {

using TestSupport::httpGet;
using TestSupport::WebSocket;

/// Where a busy machine may take longer for what a test does than a client may be silent.
class WebServerLongTimeoutTest : public WebServerTest {
protected:
    WebServerLongTimeoutTest() : WebServerTest(600) {}
};

TEST_F(WebServerTest, PingsAfterFifteenSecondsByDefault) {
    const WebSite site{WebAccess({"127.0.0.1", port}, "", "k", "c", [] { return now; }), PageFiles(), {}};
    EXPECT_EQ(site.timeoutSeconds, 15);
}

TEST_F(WebServerTest, TheKeyOpensThePagesAndTheCookieOpensThemAgain) {
    const auto first = httpGet(port, "/?key=thekey");
    EXPECT_EQ(first.status, 200);
    EXPECT_EQ(first.body, "<p>index</p>");
    EXPECT_EQ(first.headers.at("content-type"), "text/html; charset=utf-8");
    const std::string given = first.headers.at("set-cookie");
    const std::size_t end = given.find(';');
    EXPECT_EQ(given.substr(0, end).find("settings-" + std::to_string(port) + "="), 0U);
    EXPECT_EQ(given.substr(end), "; Path=/; HttpOnly; SameSite=Strict; Max-Age=2592000");
    const auto second = httpGet(port, "/device", {"Cookie: " + given.substr(0, end)});
    EXPECT_EQ(second.body, "<p>device</p>");
    EXPECT_EQ(second.headers.count("set-cookie"), 0U);
    EXPECT_EQ(httpGet(port, "/large.js", {cookie()}).body, std::string(300000, 'x'));
    EXPECT_EQ(httpGet(port, "/none", {cookie()}).status, 404);
}

TEST_F(WebServerTest, ANewKeyClosesConnectionsThatCameWithTheOldOne) {
    WebSocket withKey(port, "/settings?key=thekey", "settings.v1");
    WebSocket withCookie(port, "/device", "device.v1", {cookie()});
    WebSocket deaf(port, "/settings?key=thekey", "settings.v1", {}, 4096);
    waitFor([&] { return connections == 3; });
    WebSocket slow(port, "/settings?key=thekey", "settings.v1", {}, 4096);
    waitFor([&] { return connections == 4; });
    const std::string old = cookie();
    int opened = 0;
    onOpen = [&] {
        if (++opened == 1) {
            // More than the kernel takes for those who read nothing yet.
            sendTo(clients[2], std::string(900000, 'x'));
            sendTo(clients[3], std::string(900000, 'x'));
        } else if (opened == 2) {
            webServer->replaceKey("newkey", "newsecret");
            for (const auto& client : clients) {
                sendTo(client, "too late");
            }
        }
    };
    EXPECT_EQ(httpGet(port, "/open").status, 503);
    EXPECT_EQ(httpGet(port, "/open").status, 503);
    EXPECT_EQ(withKey.receive().value_or(WebSocket::Message()).closeStatus(), 4401);
    EXPECT_EQ(withCookie.receive().value_or(WebSocket::Message()).closeStatus(), 4401);
    EXPECT_EQ(slow.receive().value_or(WebSocket::Message()).closeStatus(), 4401) << "after a part of its message";
    withKey.sendText("x");
    waitFor([&] { return disconnections == 4; });
    EXPECT_EQ(tooSlow, 0);
    EXPECT_EQ(httpGet(port, "/?key=thekey").status, 403);
    EXPECT_EQ(httpGet(port, "/", {old}).status, 403);
    EXPECT_EQ(WebSocket(port, "/settings", "settings.v1", {old}).status(), 403);
    EXPECT_EQ(httpGet(port, "/?key=newkey").status, 200);
    WebSocket next(port, "/settings?key=newkey", "settings.v1");
    next.sendText("x");
    EXPECT_EQ(next.receiveText(), "<x>");
}

TEST_F(WebServerTest, WithoutKeyOrCookieOnlyTheOpenPathsAnswer) {
    for (const auto* path : {"/", "/device", "/large.js", "/none", "/?key=thekex", "/?key=", "/?kex=thekey"}) {
        const auto response = httpGet(port, path);
        EXPECT_EQ(response.status, 403) << path;
        EXPECT_EQ(response.body, "The key is missing or old. \"settingsctl page\" prints the address.\n") << path;
        EXPECT_EQ(response.headers.count("set-cookie"), 0U);
    }
    const auto open = httpGet(port, "/open");
    EXPECT_EQ(open.status, 503);
    EXPECT_EQ(open.body, "not yet\n");
    EXPECT_EQ(openResponses, 1);
}

TEST_F(WebServerTest, ForeignHostsAndOriginsGetNothing) {
    for (const auto* header : {"Host: rebound.example", "Host: 127.0.0.1", "Origin: http://example", "Origin: null",
                               "Origin:", "Origin: "}) {
        EXPECT_EQ(httpGet(port, "/open", {header}).status, 403) << header;
        EXPECT_EQ(httpGet(port, "/?key=thekey", {header}).status, 403) << header;
        EXPECT_EQ(WebSocket(port, "/settings?key=thekey", "settings.v1", {header}).status(), 403) << header;
    }
    EXPECT_EQ(openResponses, 0);
    EXPECT_EQ(connections, 0);
    EXPECT_EQ(httpGet(port, "/open", {"Origin: http://localhost:5173"}).status, 503);
}

TEST_F(WebServerTest, EveryAnswerCarriesTheSecurityHeaders) {
    WebSocket socket(port, "/settings?key=thekey", "settings.v1");
    WebSocket refused(port, "/settings", "settings.v1");
    TestSupport::TcpConnection posting(port);
    const auto posted = askHttp(posting, "POST /?key=thekey HTTP/1.1\r\n" + host() + "Content-Length: 5\r\n");
    EXPECT_EQ(posted.status, 405);
    EXPECT_EQ(posted.headers.at("allow"), "GET, HEAD");
    for (const auto& response :
         {httpGet(port, "/?key=thekey"), httpGet(port, "/"), httpGet(port, "/open"), httpGet(port, "/x", {cookie()}),
          httpGet(port, "/", {"Host: example"}), posted, socket.answer(), refused.answer()}) {
        SCOPED_TRACE(response.status);
        EXPECT_EQ(response.headers.at("content-security-policy"),
                  "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
                  "base-uri 'none'; form-action 'none'; frame-ancestors 'none'");
        EXPECT_EQ(response.headers.at("x-content-type-options"), "nosniff");
        EXPECT_EQ(response.headers.at("referrer-policy"), "no-referrer");
        EXPECT_EQ(response.headers.at("cache-control"), "no-store");
    }
}

TEST_F(WebServerTest, NoSpellingOfAPathLeadsOutOfTheFolder) {
    std::ofstream(folder.path().string() + ".secret") << "SECRET";
    const std::string name = folder.path().filename().string() + ".secret";
    for (const auto& prefix : {"/../", "/%2e%2e/", "/..%2f", "/%2e%2e%2f", "/assets/../../", "//../", "/.%00./",
                               "/..\\", "/%252e%252e/", "/..;/", "/\xc0\xae\xc0\xae/"}) {
        const std::string target = prefix + name;
        TestSupport::TcpConnection connection(port);
        connection.send("GET " + target + " HTTP/1.1\r\n" + host() + cookie() + "\r\nConnection: close\r\n\r\n");
        const std::string answer = connection.receiveAll(std::chrono::seconds(1));
        EXPECT_EQ(answer.find("SECRET"), std::string::npos) << target;
        EXPECT_EQ(answer.find(" 200 "), std::string::npos) << target;
    }
    TestSupport::TcpConnection absolute(port);
    absolute.send("GET file:///etc/passwd HTTP/1.1\r\n" + host() + cookie() + "\r\n\r\n");
    EXPECT_EQ(absolute.receiveAll(std::chrono::seconds(1)).find("root:"), std::string::npos);
    std::remove((folder.path().string() + ".secret").c_str());
}

TEST_F(WebServerTest, HeadAnswersWithoutABodyAndConnectionsAreUsedAgain) {
    TestSupport::TcpConnection connection(port);
    const auto head = askHttp(connection, "HEAD /?key=thekey HTTP/1.1\r\n" + host(), false);
    EXPECT_EQ(head.status, 200);
    EXPECT_EQ(head.headers.at("content-length"), "12");
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(askHttp(connection, "GET /large.js?key=thekey HTTP/1.1\r\n" + host()).body.size(), 300000U);
    }
}

TEST_F(WebServerTest, AWebSocketNeedsItsPathAndSubprotocol) {
    WebSocket settings(port, "/settings?key=thekey", "settings.v1");
    EXPECT_EQ(settings.status(), 101);
    EXPECT_EQ(settings.answer().headers.at("sec-websocket-protocol"), "settings.v1");
    WebSocket device(port, "/device", "device.v1", {cookie()});
    EXPECT_EQ(device.status(), 101);
    WebSocket choosing(port, "/device?key=thekey", "other, device.v1,settings.v1");
    EXPECT_EQ(choosing.answer().headers.at("sec-websocket-protocol"), "device.v1");
    waitFor([&] { return connections == 3; });
    EXPECT_EQ(origins, "page device device ");
    EXPECT_EQ(WebSocket(port, "/settings", "settings.v1").status(), 403);
    EXPECT_EQ(WebSocket(port, "/settings?key=thekex", "settings.v1").status(), 403);
    const std::vector<std::pair<std::string, std::string>> wrong{{"/settings", ""},
                                                                 {"/settings", "settings.v2"},
                                                                 {"/settings", "device.v1"},
                                                                 {"/settings", "http"},
                                                                 {"/settings", "device.v1, settings.v1"},
                                                                 {"/settings", "settings.v11"},
                                                                 {"/device", "settings.v1"},
                                                                 {"/", "settings.v1"},
                                                                 {"/settings/", "settings.v1"}};
    for (const auto& [path, protocol] : wrong) {
        WebSocket socket(port, path, protocol, {cookie()});
        EXPECT_EQ(socket.status(), 400) << path << " " << protocol;
    }
    EXPECT_EQ(connections, 3);
}

TEST_F(WebServerTest, MessagesAreFramesHoweverTheyWereFragmented) {
    WebSocket socket(port, "/settings?key=thekey", "settings.v1");
    socket.sendText("one");
    socket.sendFrame(1, "t", false);
    socket.sendFrame(9, "are you there", true);
    socket.sendFrame(0, "w", false);
    socket.sendFrame(0, "o", true);
    socket.sendText("");
    socket.sendText("line\nend \xC3\xA9");
    EXPECT_EQ(socket.receiveText(), "<one>");
    const auto pong = socket.receive();
    EXPECT_EQ(pong->kind, 10);
    EXPECT_EQ(pong->payload, "are you there");
    EXPECT_EQ(socket.receiveText(), "<two>");
    EXPECT_EQ(socket.receiveText(), "<>");
    EXPECT_EQ(socket.receiveText(), "<line\nend \xC3\xA9>");
}

TEST_F(WebServerTest, AFrameOverTheLimitClosesWith1009) {
    WebSocket exact(port, "/settings?key=thekey", "settings.v1");
    exact.sendText(std::string(Wire::maximumFrameSize, 'x'));
    EXPECT_EQ(exact.receiveText().value_or("").size(), Wire::maximumFrameSize + 2);
    exact.sendText(std::string(Wire::maximumFrameSize + 1, 'x'));
    EXPECT_EQ(exact.receive().value_or(WebSocket::Message()).closeStatus(), 1009);
    WebSocket pieces(port, "/settings?key=thekey", "settings.v1");
    pieces.sendFrame(1, std::string(Wire::maximumFrameSize, 'x'), false);
    pieces.sendFrame(0, "y", true);
    EXPECT_EQ(pieces.receive().value_or(WebSocket::Message()).closeStatus(), 1009);
}

TEST_F(WebServerTest, ABinaryMessageClosesWith1003) {
    WebSocket socket(port, "/settings?key=thekey", "settings.v1");
    socket.sendFrame(2, "one", true);
    EXPECT_EQ(socket.receive().value_or(WebSocket::Message()).closeStatus(), 1003);
}

TEST_F(WebServerTest, AFrameWithoutAMaskClosesWith1002) {
    std::atomic<int> frames{0};
    onFrame = [&](const auto&, const auto&) { ++frames; };
    for (const auto* bytes : {"\x81\x01x", "\x89\x01x", "\x88\x02\x03\xe8"}) {
        WebSocket socket(port, "/settings?key=thekey", "settings.v1");
        socket.sendRaw(bytes);
        EXPECT_EQ(socket.receive().value_or(WebSocket::Message()).closeStatus(), 1002);
        EXPECT_FALSE(socket.receive());
        EXPECT_TRUE(socket.closedByPeer());
    }
    waitFor([&] { return disconnections == 3; });
    EXPECT_EQ(frames, 0);
}

TEST_F(WebServerTest, AViolationOfTheProtocolClosesWith1002AndInvalidUtf8With1007) {
    for (const auto& [kind, payload, status] :
         {std::tuple(3, std::string("x"), 1002), std::tuple(11, std::string("x"), 1002),
          std::tuple(9, std::string(126, 'x'), 1002), std::tuple(0, std::string("x"), 1002),
          std::tuple(8, std::string("\x03\xe7"), 1002), std::tuple(1, std::string("\xff"), 1007)}) {
        WebSocket socket(port, "/settings?key=thekey", "settings.v1");
        socket.sendFrame(kind, payload, true);
        EXPECT_EQ(socket.receive().value_or(WebSocket::Message()).closeStatus(), status) << kind;
    }
}

TEST_F(WebServerTest, DataAfterACloseFrameIsIgnored) {
    std::atomic<int> frames{0};
    onFrame = [&](const auto&, const auto&) { ++frames; };
    WebSocket socket(port, "/settings?key=thekey", "settings.v1");
    const std::string closeFrame = WebSocket::frameBytes(8, "\x03\xe8", true);
    socket.sendRaw(WebSocket::frameBytes(1, "before", true) + closeFrame + WebSocket::frameBytes(1, "after", true) +
                   WebSocket::frameBytes(1, std::string(300, 'x'), true));
    EXPECT_EQ(socket.receive().value_or(WebSocket::Message()).closeStatus(), 1000);
    waitFor([&] { return disconnections == 1; });
    EXPECT_EQ(frames, 1);
}

TEST_F(WebServerTest, AClientMaySendManyRequestsBeforeItReads) {
    const std::string answer(5000, 'a');
    onFrame = [&](const auto& client, const auto& frame) { sendTo(client, frame + answer); };
    WebSocket socket(port, "/settings?key=thekey", "settings.v1", {}, 4096);
    std::thread writer([&] {
        for (int number = 0; number < 2000; ++number) {
            socket.sendText(std::to_string(number));
        }
    });
    for (int number = 0; number < 2000; ++number) {
        ASSERT_EQ(socket.receiveText(), std::to_string(number) + answer);
    }
    writer.join();
    EXPECT_EQ(disconnections, 0);
}

TEST_F(WebServerTest, AClientThatReadsSlowlyIsNotTimedOut) {
    const std::string answer(5000, 'a');
    onFrame = [&](const auto& client, const auto& frame) { sendTo(client, frame + answer); };
    WebSocket socket(port, "/settings?key=thekey", "settings.v1", {}, 4096);
    std::thread writer([&] {
        for (int number = 0; number < 2000; ++number) {
            socket.sendText("x");
        }
    });
    int received = 0;
    while (received < 2000 && socket.receiveText()) {
        if (++received % 60 == 0) {
            // Three seconds in all: its answers to pings are behind its requests, which wait for it to read.
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }
    EXPECT_EQ(received, 2000);
    writer.join();
}

TEST_F(WebServerTest, AClientThatDoesNotReadIsDroppedAfterAllThatItWasSent) {
    const auto frame = std::make_shared<const std::string>(10000, 'x');
    onFrame = [&](const auto& asking, const auto&) {
        for (int number = 0; number < 1000; ++number) {
            for (const auto& client : clients) {
                if (client != asking) {
                    sendTo(client, std::to_string(number) + " " + *frame);
                }
            }
        }
        sendTo(asking, "sent");
    };
    WebSocket slow(port, "/settings?key=thekey", "settings.v1", {}, 4096);
    waitFor([&] { return connections == 1; });
    WebSocket asking(port, "/settings?key=thekey", "settings.v1");
    asking.sendText("flood");
    EXPECT_EQ(asking.receiveText(), "sent");
    waitFor([&] { return disconnections == 1; });
    EXPECT_EQ(tooSlow, 1);
    int expected = 0;
    while (const auto text = slow.receiveText()) {
        ASSERT_EQ(*text, std::to_string(expected) + " " + *frame);
        ++expected;
    }
    EXPECT_TRUE(slow.closedByPeer());
    EXPECT_LT(expected, 1000);
}

TEST_F(WebServerTest, AClientThatAnswersNoPingIsDroppedAndOneThatDoesStays) {
    WebSocket silent(port, "/settings?key=thekey", "settings.v1");
    WebSocket answering(port, "/settings?key=thekey", "settings.v1");
    silent.answerPings = false;
    std::thread reader([&] { EXPECT_EQ(answering.receiveText(), "<still here>"); });
    EXPECT_EQ(silent.receive().value_or(WebSocket::Message()).kind, 9);
    silent.receive();
    EXPECT_TRUE(silent.closedByPeer());
    waitFor([&] { return disconnections == 1; });
    answering.sendText("still here");
    reader.join();
    EXPECT_EQ(disconnections, 1);
}

TEST_F(WebServerTest, AConnectionThatNeverFinishesARequestOrReadsItsAnswerIsDropped) {
    const std::size_t descriptors = TestSupport::openDescriptors(::getpid());
    TestSupport::TcpConnection half(port);
    half.send("GET /?key=thekey HTTP/1.1\r\n");
    TestSupport::TcpConnection deaf(port, 4096);
    for (int number = 0; number < 100; ++number) {
        deaf.send("GET /large.js?key=thekey HTTP/1.1\r\n" + host() + "\r\n");
    }
    EXPECT_EQ(half.receiveAll().find(" 200 "), std::string::npos);
    EXPECT_TRUE(half.closedByPeer());
    // The test's own ends are left.
    waitFor([&] { return TestSupport::openDescriptors(::getpid()) == descriptors + 2; });
    EXPECT_LT(deaf.receiveAll().size(), 100 * 300000U);
    EXPECT_TRUE(deaf.closedByPeer());
}

TEST_F(WebServerTest, StoppingDrainsClientsAndClosesWith1001) {
    onFrame = [&](const auto& client, const auto&) {
        sendTo(client, std::string(200000, 'x'));
        sendTo(client, "last");
    };
    WebSocket socket(port, "/settings?key=thekey", "settings.v1");
    WebSocket idle(port, "/device?key=thekey", "device.v1");
    socket.sendText("x");
    EXPECT_EQ(socket.receiveText().value_or("").size(), 200000U);
    stop();
    EXPECT_EQ(socket.receiveText(), "last");
    EXPECT_EQ(socket.receive().value_or(WebSocket::Message()).closeStatus(), 1001);
    EXPECT_EQ(idle.receive().value_or(WebSocket::Message()).closeStatus(), 1001);
    EXPECT_EQ(disconnections, 2);
    EXPECT_THROW(TestSupport::TcpConnection again(port), std::runtime_error);
}

TEST_F(WebServerTest, StoppingDoesNotWaitForAClientThatDoesNotRead) {
    onFrame = [&](const auto& client, const auto&) { sendTo(client, std::string(1000000, 'x')); };
    WebSocket stuck(port, "/settings?key=thekey", "settings.v1", {}, 4096);
    stuck.sendText("x");
    stuck.sendText("x");
    stuck.sendText("x");
    TestSupport::TcpConnection halfRequest(port);
    halfRequest.send("GET / HT");
    waitFor([&] { return connections == 1; });
    stop();
    EXPECT_EQ(disconnections, 1);
}

TEST_F(WebServerLongTimeoutTest, ConnectionsOverTheLimitAreClosedAndTheOthersGoOn) {
    std::vector<std::unique_ptr<WebSocket>> sockets;
    for (std::size_t number = 0; number < maximumClients + 20; ++number) {
        sockets.push_back(std::make_unique<WebSocket>(port, "/settings?key=thekey", "settings.v1"));
        if (sockets.back()->status() != 101) {
            sockets.pop_back();
        }
    }
    EXPECT_EQ(sockets.size(), maximumClients);
    waitFor([&] { return refusedConnections == 20; });
    for (const auto& socket : sockets) {
        socket->sendText("x");
        EXPECT_EQ(socket->receiveText(), "<x>");
    }
    sockets.pop_back();
    waitFor([&] { return disconnections == 1; });
    WebSocket next(port, "/settings?key=thekey", "settings.v1");
    EXPECT_EQ(next.status(), 101);
}

TEST_F(WebServerTest, GarbageDoesNotDisturbOtherClients) {
    WebSocket good(port, "/settings?key=thekey", "settings.v1");
    for (const std::string& bytes :
         std::vector<std::string>{std::string("\x00\x01\x02", 3), std::string("GET\r\n\r\n"), std::string(100000, 'a'),
                                  "GET / HTTP/1.1\r\nX: " + std::string(100000, 'a') + "\r\n\r\n",
                                  std::string("GET /%zz HTTP/1.1\r\n\r\n")}) {
        TestSupport::TcpConnection connection(port);
        connection.send(bytes);
        EXPECT_EQ(connection.receiveAll(std::chrono::milliseconds(200)).find(" 200 "), std::string::npos);
    }
    WebSocket badFrame(port, "/settings?key=thekey", "settings.v1");
    badFrame.sendRaw("\xff\xff\xff\xff");
    EXPECT_NE(badFrame.receive().value_or(WebSocket::Message()).kind, 1);
    good.sendText("x");
    EXPECT_EQ(good.receiveText(), "<x>");
}

}  // namespace SettingsHandlerKit
