#include <gtest/gtest.h>

#include "server/web/HttpRequest.h"

namespace SettingsHandlerKit {

namespace {

using State = HttpRequest::State;

const std::string hostLine = "Host: localhost:8097\r\n";

HttpRequest get(const std::string& target, const std::string& headers = "") {
    return readHttpRequest("GET " + target + " HTTP/1.1\r\n" + hostLine + headers + "\r\n");
}

}  // namespace

TEST(HttpRequestTest, ReadsWhatDecidesAboutTheAnswer) {
    const HttpRequest request = get("/a%20b.js?x=1&key=k&key=other", "Origin:\r\nCookie: a=1\r\ncookie: b=2\r\n");
    EXPECT_EQ(request.state, State::COMPLETE);
    EXPECT_TRUE(request.isRead);
    EXPECT_FALSE(request.isHead);
    EXPECT_TRUE(request.keepsConnection);
    EXPECT_FALSE(request.asksForWebSocket);
    EXPECT_EQ(request.path, "/a b.js");
    EXPECT_EQ(request.visitor.host, "localhost:8097");
    EXPECT_EQ(request.visitor.origin, "") << "empty is not missing";
    EXPECT_EQ(request.visitor.key, "k");
    EXPECT_EQ(request.visitor.cookies, "a=1; b=2");
    const HttpRequest bare = readHttpRequest("HEAD / HTTP/1.0\r\n\r\n");
    EXPECT_TRUE(bare.isHead);
    EXPECT_TRUE(bare.isRead);
    EXPECT_FALSE(bare.keepsConnection);
    EXPECT_FALSE(bare.visitor.host || bare.visitor.origin || bare.visitor.key || bare.visitor.cookies);
    EXPECT_FALSE(get("/?xkey=k").visitor.key);
    EXPECT_EQ(get("/?key=").visitor.key, "");
    EXPECT_FALSE(get("/", "Connection: close\r\n").keepsConnection);
}

TEST(HttpRequestTest, TakesOneRequestOfSeveralAndWaitsForTheEndOfAHead) {
    const std::string first = "GET /one HTTP/1.1\r\n" + hostLine + "\r\n";
    EXPECT_EQ(readHttpRequest(first + "GET /two").size, first.size());
    EXPECT_EQ(readHttpRequest(first + first).path, "/one");
    for (std::size_t size = 0; size < first.size(); ++size) {
        EXPECT_EQ(readHttpRequest(first.substr(0, size)).state, State::INCOMPLETE) << size;
    }
}

TEST(HttpRequestTest, AMalformedHeadIsRefusedAtOnce) {
    const std::string line = "GET / HTTP/1.1\r\n";
    for (const std::string& bytes :
         {std::string("\x00\x01", 2), std::string("\r\n") + line, std::string("GET\r\n"), std::string("GET /\r\n"),
          std::string("GET / HTTP/2.0\r\n"), std::string("GET / HTTP/1.1 \r\n"), std::string("GET /a b HTTP/1.1\r\n"),
          std::string("GET /\x01 HTTP/1.1\r\n"), std::string("PRI * HTTP/2.0\r\n"),
          std::string("GET / HTTP/1.1\nHost: a\n\n"), line + "Host : a\r\n\r\n", line + "Host\r\n\r\n",
          line + "X: a\x01\r\n\r\n", line + std::string("X: a\0b\r\n\r\n", 10), line + "X: a\rb\r\n\r\n",
          line + ": a\r\n\r\n"}) {
        EXPECT_EQ(readHttpRequest(bytes).state, State::MALFORMED) << bytes;
        EXPECT_FALSE(readHttpRequest(bytes).keepsConnection);
    }
    for (const auto* target : {"/%zz", "/%", "/%2", "/%2\xc3"}) {
        EXPECT_EQ(get(target).state, State::MALFORMED) << target;
    }
}

TEST(HttpRequestTest, WhatTwoReadersCouldReadDifferentlyIsRefused) {
    for (const auto* headers :
         {"Host: example\r\n", "Host: localhost:8097\r\n", "Origin: http://a\r\nOrigin: http://b\r\n",
          "Content-Length: 5\r\nContent-Length: 6\r\n", "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n",
          "Transfer-Encoding: chunked\r\nContent-Length: 5\r\n", "Content-Length: -1\r\n", "Content-Length: +1\r\n",
          "Content-Length: 1 1\r\n", "Transfer-Encoding : chunked\r\n"}) {
        EXPECT_EQ(get("/", headers).state, State::MALFORMED) << headers;
    }
}

TEST(HttpRequestTest, NothingIsReadAfterABody) {
    for (const auto* headers : {"Content-Length: 5\r\n", "Transfer-Encoding: chunked\r\n", "Transfer-Encoding: gzip\r\n",
                                "Content-Length: 5\r\nContent-Length: 5\r\n", "Content-Length: 18446744073709551615\r\n"}) {
        EXPECT_EQ(get("/", headers).state, State::COMPLETE) << headers;
        EXPECT_FALSE(get("/", headers).keepsConnection) << headers;
    }
    EXPECT_TRUE(get("/", "Content-Length: 0\r\n").keepsConnection);
    EXPECT_FALSE(readHttpRequest("POST / HTTP/1.1\r\n\r\n").keepsConnection);
}

TEST(HttpRequestTest, AHeadMayBeFourKibibytesLong) {
    const std::string head = "GET / HTTP/1.1\r\n" + hostLine + "X: ";
    const std::string end = "\r\n\r\n";
    const std::string exact = head + std::string(longestWebRequest - head.size() - end.size(), 'x') + end;
    EXPECT_EQ(readHttpRequest(exact).state, State::COMPLETE);
    EXPECT_EQ(readHttpRequest(head + std::string(longestWebRequest - head.size() - end.size() + 1, 'x') + end).state,
              State::TOO_LONG);
    EXPECT_EQ(readHttpRequest(head + std::string(longestWebRequest, 'x')).state, State::TOO_LONG);
    EXPECT_EQ(readHttpRequest("GET /" + std::string(longestWebRequest, 'x')).state, State::TOO_LONG);
    EXPECT_EQ(readHttpRequest(std::string(longestWebRequest + 1, 'x')).state, State::TOO_LONG);
    std::string many = "GET / HTTP/1.1\r\n";
    while (many.size() <= longestWebRequest) {
        many += "a:\r\n";
    }
    EXPECT_EQ(readHttpRequest(many).state, State::TOO_LONG);
}

TEST(HttpRequestTest, ReadsARequestForAWebSocket) {
    const std::string headers =
        "connection: keep-alive, upgrade\r\nUpgrade: WebSocket\r\nSec-WebSocket-Version: 13\r\n"
        "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Protocol: a\r\nSec-WebSocket-Protocol: b, c\r\n";
    const HttpRequest request = get("/settings?key=k", headers);
    EXPECT_TRUE(request.asksForWebSocket);
    EXPECT_EQ(request.path, "/settings");
    EXPECT_EQ(request.webSocketVersion, "13");
    EXPECT_EQ(request.webSocketKey, "dGhlIHNhbXBsZSBub25jZQ==");
    EXPECT_EQ(request.webSocketProtocols, "a,b, c");
    EXPECT_FALSE(get("/", "Upgrade: websocket\r\n").asksForWebSocket);
    EXPECT_FALSE(get("/", "Connection: upgrade\r\nUpgrade: h2c\r\n").asksForWebSocket);
    EXPECT_FALSE(readHttpRequest("POST / HTTP/1.1\r\n" + headers + "\r\n").asksForWebSocket);
}

}  // namespace SettingsHandlerKit
