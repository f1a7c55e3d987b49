#include <stdexcept>

#include "kit/server/web/WebServerFixture.h"

namespace SettingsHandlerKit {

using TestSupport::askHttp;
using TestSupport::TcpConnection;
using TestSupport::WebSocket;

/// Its timeouts are so long that none of them expires.
class HttpConnectionTest : public WebServerTest {
protected:
    HttpConnectionTest() : WebServerTest(600) {}

    std::string request(const std::string& headers = "") {
        return "GET /?key=thekey HTTP/1.1\r\n" + host() + headers + "\r\n";
    }
    /// All answers to `bytes`, when nothing is sent after them.
    std::string answersTo(const std::string& bytes) {
        TcpConnection connection(port);
        connection.send(bytes);
        connection.finishSending();
        return connection.receiveAll();
    }
    static std::size_t countOf(const std::string& text, const std::string& part) {
        std::size_t count = 0;
        for (std::size_t place = text.find(part); place != std::string::npos; place = text.find(part, place + 1)) {
            ++count;
        }
        return count;
    }
};

TEST_F(HttpConnectionTest, RequestsInOnePieceAreAnsweredInOrderAlsoAfterTheOtherSideStoppedSending) {
    const std::string answers =
        answersTo(request() + "GET /none?key=thekey HTTP/1.1\r\n" + host() + "\r\n" + request() + "GET / HT");
    EXPECT_EQ(countOf(answers, "HTTP/1.1 "), 3U) << answers;
    const std::size_t second = answers.find("404 Not Found");
    EXPECT_LT(answers.find("<p>index</p>"), second);
    EXPECT_GT(answers.rfind("<p>index</p>"), second);
}

TEST_F(HttpConnectionTest, ARequestMayComeByteByByte) {
    TcpConnection connection(port);
    for (int round = 0; round < 2; ++round) {
        for (const char byte : request().substr(0, request().size() - 2)) {
            connection.send(std::string(1, byte));
        }
        EXPECT_EQ(askHttp(connection, "").body, "<p>index</p>");
    }
}

TEST_F(HttpConnectionTest, AMalformedOrTooLongHeadIsAnsweredAndClosed) {
    for (const auto& [bytes, status] :
         {std::pair(std::string("GET / HTTP/1.1\nHost"), 400), std::pair(std::string("\x16\x03\x01\x02"), 400),
          std::pair("GET / HTTP/1.1\r\n" + host() + host(), 400),
          std::pair("GET / HTTP/1.1\r\nX: " + std::string(100000, 'x'), 431)}) {
        TcpConnection connection(port);
        const auto answer = askHttp(connection, bytes);
        EXPECT_EQ(answer.status, status) << bytes.substr(0, 40);
        EXPECT_EQ(answer.headers.at("connection"), "close");
        EXPECT_EQ(answer.headers.at("x-content-type-options"), "nosniff");
        EXPECT_EQ(answer.headers.at("content-security-policy").find("default-src 'none'"), 0U);
        EXPECT_EQ(connection.receiveAll(), "");
        EXPECT_TRUE(connection.closedByPeer());
    }
}

TEST_F(HttpConnectionTest, ABodyIsNeverTakenForARequest) {
    const std::string hidden = "GET /open HTTP/1.1\r\n" + host() + "\r\n";
    const std::string length = "Content-Length: " + std::to_string(hidden.size()) + "\r\n";
    for (const auto& headers :
         {length, std::string("Transfer-Encoding: chunked\r\n"), length + "Transfer-Encoding: chunked\r\n"}) {
        EXPECT_EQ(countOf(answersTo(request(headers) + hidden), "HTTP/1.1 "), 1U) << headers;
    }
    EXPECT_EQ(countOf(answersTo("POST /?key=thekey HTTP/1.1\r\n" + host() + length + "\r\n" + hidden), "HTTP/1.1 "),
              1U);
    EXPECT_EQ(openResponses, 0);
}

TEST_F(HttpConnectionTest, TheAnswerToALargeBodyArrives) {
    TcpConnection connection(port);
    connection.send("POST /?key=thekey HTTP/1.1\r\n" + host() + "Content-Length: 3000000\r\n\r\n" +
                    std::string(3000000, 'x'));
    EXPECT_EQ(askHttp(connection, "").status, 405);
    EXPECT_EQ(connection.receiveAll(), "");
    EXPECT_TRUE(connection.closedByPeer());
}

TEST_F(HttpConnectionTest, ARequestForAWebSocketMustBeComplete) {
    const std::string upgrade = "Connection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Protocol: settings.v1\r\n";
    const auto statusOf = [&](const std::string& headers) {
        TcpConnection connection(port);
        return askHttp(connection, "GET /settings?key=thekey HTTP/1.1\r\n" + host() + upgrade + headers).status;
    };
    const std::string version = "Sec-WebSocket-Version: 13\r\n";
    const std::string key = "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n";
    EXPECT_EQ(statusOf(version + key), 101);
    EXPECT_EQ(statusOf(key), 426);
    EXPECT_EQ(statusOf("Sec-WebSocket-Version: 8\r\n" + key), 426);
    EXPECT_EQ(statusOf(version), 400);
    EXPECT_EQ(statusOf(version + "Sec-WebSocket-Key: dGhl\r\n"), 400);
    EXPECT_EQ(statusOf(version + "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ=x\r\n"), 400);
    WebSocket open(port, "/settings?key=thekey", "settings.v1");
    EXPECT_EQ(open.answer().headers.at("sec-websocket-accept"), "s3pPLMBiTxaQ9kYGzzhZRbK+xOo=");
}

TEST_F(HttpConnectionTest, AnAnswerThatFailsClosesTheConnectionAlone) {
    onOpen = [] { throw std::runtime_error("no answer"); };
    TcpConnection failing(port);
    TcpConnection other(port);
    failing.send("GET /open HTTP/1.1\r\n" + host() + "\r\n");
    EXPECT_EQ(failing.receiveAll(), "");
    EXPECT_TRUE(failing.closedByPeer());
    EXPECT_EQ(askHttp(other, "GET /?key=thekey HTTP/1.1\r\n" + host()).status, 200);
}

TEST_F(HttpConnectionTest, StoppingClosesIdleConnections) {
    TcpConnection idle(port);
    EXPECT_EQ(askHttp(idle, "GET /open HTTP/1.1\r\n" + host()).status, 503);
    WebSocket page(port, "/settings?key=thekey", "settings.v1");
    stop();
    EXPECT_EQ(idle.receiveAll(), "");
    EXPECT_TRUE(idle.closedByPeer());
    EXPECT_EQ(page.receive().value_or(WebSocket::Message()).closeStatus(), 1001);
}

}  // namespace SettingsHandlerKit
