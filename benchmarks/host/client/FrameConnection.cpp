#include "host/client/FrameConnection.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace Benchmarks {

namespace {

constexpr std::size_t bufferSize = 128UL * 1024UL;

template <typename Address>
int connectedSocket(const Address& address, int family, const std::string& shown) {
    const int socket = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        const std::string reason = std::strerror(errno);
        ::close(socket);
        throw std::runtime_error("cannot connect to " + shown + ": " + reason);
    }
    return socket;
}

int connectedUnixSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        throw std::runtime_error("the socket path is too long: " + path);
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return connectedSocket(address, AF_UNIX, path);
}

int connectedTcpSocket(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int socket = connectedSocket(address, AF_INET, "port " + std::to_string(port));
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
        : FrameConnection(connectedTcpSocket(port)) {
        send("GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) +
             "\r\nConnection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
             "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Protocol: " +
             protocol + "\r\n\r\n");
        const std::string head = receiveUntil("\r\n\r\n");
        if (head.find(" 101 ") == std::string::npos) {
            throw std::runtime_error("no WebSocket: " + head.substr(0, head.find('\r')));
        }
    }

    std::string bytesOf(std::string_view frame) const override { return masked(text, frame); }

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
            send(masked(pong, payload));
            return {{}, head + size};
        }
        return {payload, head + size};
    }

private:
    static constexpr unsigned text = 1;
    static constexpr unsigned ping = 9;
    static constexpr unsigned pong = 10;
    static constexpr std::size_t mediumMark = 126;

    static std::string masked(unsigned kind, std::string_view payload) {
        constexpr unsigned last = 0x80;
        std::string bytes(1, static_cast<char>(last | kind));
        if (payload.size() < mediumMark) {
            bytes += static_cast<char>(last | payload.size());
        } else {
            bytes += static_cast<char>(last | mediumMark);
            bytes += static_cast<char>(payload.size() / 256);
            bytes += static_cast<char>(payload.size() % 256);
        }
        // A mask of zeros leaves the payload as it is.
        return bytes.append(4, '\0').append(payload);
    }
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
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) {
            throw std::runtime_error("the server is gone");
        }
        sent += static_cast<std::size_t>(count);
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
    return std::make_unique<LineConnection>(connectedUnixSocket(path));
}

std::unique_ptr<FrameConnection> connectToPort(std::uint16_t port) {
    return std::make_unique<LineConnection>(connectedTcpSocket(port));
}

std::unique_ptr<FrameConnection> connectToWebSocket(std::uint16_t port, const std::string& target,
                                                    const std::string& protocol) {
    return std::make_unique<WebSocketConnection>(port, target, protocol);
}

}  // namespace Benchmarks
