#include "host/client/FrameConnection.h"

#include <cstring>
#include <stdexcept>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "support/ConnectedSocket.h"
#include "support/SendAll.h"
#include "support/WebClient.h"

namespace Benchmarks {

namespace {

constexpr std::size_t bufferSize = 128UL * 1024UL;

int noDelaySocket(std::uint16_t port) {
    const int socket = TestSupport::connectedTcpSocket(port);
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    return socket;
}

class LineConnection : public FrameConnection {
public:
    explicit LineConnection(int connectedSocket) : FrameConnection(connectedSocket) {}

    std::string bytesOf(std::string_view frame) const override { return std::string(frame) + '\n'; }

protected:
    Taken take(std::string_view bytes) override {
        const std::size_t lineEnd = bytes.find('\n');
        return lineEnd == std::string_view::npos ? Taken{} : Taken{bytes.substr(0, lineEnd), lineEnd + 1};
    }
};

class WebSocketConnection : public FrameConnection {
public:
    WebSocketConnection(std::uint16_t port, const std::string& target, const std::string& protocol)
        : FrameConnection(noDelaySocket(port)) {
        send("GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
             "\r\nConnection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
             "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Protocol: " +
             protocol + "\r\n\r\n");
        const std::string head = receiveUntil("\r\n\r\n");
        if (head.find(" 101 ") == std::string::npos) {
            throw std::runtime_error("no WebSocket: " + head.substr(0, head.find('\r')));
        }
    }

    std::string bytesOf(std::string_view frame) const override {
        return TestSupport::WebSocket::frameBytes(text, std::string(frame), true);
    }

protected:
    Taken take(std::string_view bytes) override {
        std::size_t head = 2;
        if (bytes.size() < head) {
            return {};
        }
        std::size_t size = static_cast<unsigned char>(bytes[1]) & 0x7FU;
        if (size >= mediumMark) {
            head += size == mediumMark ? 2 : 8;
            if (bytes.size() < head) {
                return {};
            }
            size = 0;
            for (const char byte : bytes.substr(2, head - 2)) {
                size = size * 256 + static_cast<unsigned char>(byte);
            }
        }
        if (bytes.size() < head + size) {
            return {};
        }
        const std::string_view payload = bytes.substr(head, size);
        if ((static_cast<unsigned char>(bytes[0]) & 0x0FU) == ping) {
            send(TestSupport::WebSocket::frameBytes(pong, std::string(payload), true));
            return {{}, head + size};
        }
        return {payload, head + size};
    }

private:
    static constexpr int text = 1;
    static constexpr unsigned ping = 9;
    static constexpr int pong = 10;
    static constexpr std::size_t mediumMark = 126;
};

}  // namespace

FrameConnection::FrameConnection(int connectedSocket) : socket(connectedSocket), buffer(bufferSize, '\0') {
    const timeval waitTimeout{20, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &waitTimeout, sizeof(waitTimeout));
}

FrameConnection::~FrameConnection() {
    ::close(socket);
}

void FrameConnection::send(const std::string& bytes) {
    if (!TestSupport::sendAll(socket, bytes)) {
        throw std::runtime_error("the server is gone");
    }
}

void FrameConnection::fill() {
    if (start == end) {
        start = end = 0;
    } else if (end == buffer.size()) {
        std::memmove(buffer.data(), buffer.data() + start, end - start);
        end -= start;
        start = 0;
    }
    const ssize_t count = ::recv(socket, buffer.data() + end, buffer.size() - end, 0);
    if (count <= 0) {
        throw std::runtime_error(count == 0 ? "the server closed a connection" : "nothing came in time");
    }
    end += static_cast<std::size_t>(count);
}

bool FrameConnection::next(std::string_view& frame) {
    while (start < end) {
        const Taken taken = take({buffer.data() + start, end - start});
        if (taken.size == 0) {
            return false;
        }
        start += taken.size;
        if (!taken.frame.empty()) {
            frame = taken.frame;
            return true;
        }
    }
    return false;
}

std::string_view FrameConnection::receive() {
    std::string_view frame;
    while (!next(frame)) {
        fill();
    }
    return frame;
}

std::string FrameConnection::receiveUntil(std::string_view mark) {
    for (;;) {
        const std::string_view bytes(buffer.data() + start, end - start);
        const std::size_t place = bytes.find(mark);
        if (place != std::string_view::npos) {
            start += place + mark.size();
            return std::string(bytes.substr(0, place + mark.size()));
        }
        fill();
    }
}

std::unique_ptr<FrameConnection> connectToSocket(const std::string& path) {
    return std::make_unique<LineConnection>(TestSupport::connectedUnixSocket(path));
}

std::unique_ptr<FrameConnection> connectToPort(std::uint16_t port) {
    return std::make_unique<LineConnection>(noDelaySocket(port));
}

std::unique_ptr<FrameConnection> connectToWebSocket(std::uint16_t port, const std::string& target,
                                                    const std::string& protocol) {
    return std::make_unique<WebSocketConnection>(port, target, protocol);
}

}  // namespace Benchmarks
