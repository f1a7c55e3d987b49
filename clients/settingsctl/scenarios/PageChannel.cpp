#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <deque>
#include <utility>

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Failure.h"
#include "scenarios/Channel.h"

namespace SettingsCtl {

namespace {

enum Opcode : unsigned { CONTINUATION = 0, TEXT = 1, CLOSE = 8, PING = 9, PONG = 10 };

/// "http://HOST:PORT/?key=KEY" in parts.
struct PageAddress {
    std::string host;
    std::string port;
    std::string query;
};

/// Errors: `Failure`.
PageAddress partsOf(const std::string& address) {
    const std::string scheme = "http://";
    const std::size_t slash = address.find('/', scheme.size());
    const std::size_t colon = address.rfind(':', slash);
    if (address.rfind(scheme, 0) != 0 || slash == std::string::npos || colon < scheme.size()) {
        throw Failure(UNREACHABLE, "unexpected response: no address of pages");
    }
    return {address.substr(scheme.size(), colon - scheme.size()), address.substr(colon + 1, slash - colon - 1),
            address.substr(slash + 1)};
}

/// A descriptor that is closed with the object.
class Socket {
public:
    explicit Socket(int descriptor) : number(descriptor) {}
    ~Socket() {
        if (number >= 0) {
            ::close(number);
        }
    }
    Socket(Socket&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Socket& operator=(Socket&&) = delete;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    int descriptor() const { return number; }

private:
    int number;
};

void limitWaits(int socket, std::chrono::milliseconds timeout) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(timeout);
    const timeval limit{seconds.count(),
                        std::chrono::duration_cast<std::chrono::microseconds>(timeout - seconds).count()};
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
    ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
}

/// Errors: `Failure`.
Socket connectTo(const PageAddress& address, std::chrono::milliseconds timeout) {
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    std::string host = address.host;
    if (host.front() == '[') {
        host = host.substr(1, host.size() - 2);
    }
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), address.port.c_str(), &hints, &found) != 0) {
        throw Failure(UNREACHABLE, "unexpected response: no address of pages");
    }
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> place(found, ::freeaddrinfo);
    Socket socket(::socket(place->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
    limitWaits(socket.descriptor(), timeout);
    if (::connect(socket.descriptor(), place->ai_addr, place->ai_addrlen) != 0) {
        throw Failure(UNREACHABLE,
                      "cannot reach the web port " + address.host + ":" + address.port + ": " + std::strerror(errno));
    }
    return socket;
}

class PageChannel : public Channel {
public:
    PageChannel(const PageAddress& address, std::chrono::milliseconds timeout) : socket(connectTo(address, timeout)) {
        // Neither key nor mask have anything to protect on this machine.
        sendBytes("GET /settings" + address.query + " HTTP/1.1\r\nHost: " + address.host + ":" + address.port +
                  "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
                  "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\nSec-WebSocket-Protocol: settings.v1\r\n\r\n");
        const std::string end = "\r\n\r\n";
        while (pending.find(end) == std::string::npos) {
            if (!receiveBytes(0)) {
                throw Failure(UNREACHABLE, "the web port did not open a WebSocket");
            }
        }
        const std::string accepted = "HTTP/1.1 101 ";
        if (pending.rfind(accepted, 0) != 0) {
            throw Failure(UNREACHABLE, "the web port did not open a WebSocket");
        }
        pending.erase(0, pending.find(end) + end.size());
    }

    int descriptor() const override { return socket.descriptor(); }
    void send(const std::string& text) override { sendFrame(TEXT, text); }
    bool read() override {
        const bool isOpen = receiveBytes(MSG_DONTWAIT);
        while (const auto frame = takeFrame()) {
            takeIn(*frame);
        }
        return isOpen && !isClosed;
    }

    std::optional<std::string> take() override {
        if (messages.empty()) {
            return std::nullopt;
        }
        std::string next = std::move(messages.front());
        messages.pop_front();
        return next;
    }

private:
    struct Frame {
        unsigned opcode;
        bool isLast;
        std::string payload;
    };

    void takeIn(const Frame& frame) {
        if (frame.opcode == PING) {
            sendFrame(PONG, frame.payload);
        } else if (frame.opcode == CLOSE) {
            isClosed = true;
        } else if (frame.opcode == TEXT || frame.opcode == CONTINUATION) {
            message += frame.payload;
            if (frame.isLast) {
                messages.push_back(std::exchange(message, ""));
            }
        }
    }

    /// What the host has closed takes nothing more.
    void sendBytes(const std::string& bytes) const {
        std::size_t sent = 0;
        while (sent < bytes.size()) {
            const ssize_t count = ::send(socket.descriptor(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (count < 0 && errno != EINTR) {
                return;
            }
            sent += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        }
    }

    /// Returns: false at the end, or when nothing comes in time.
    bool receiveBytes(int flags) {
        std::array<char, 65536> bytes{};
        const ssize_t count = ::recv(socket.descriptor(), bytes.data(), bytes.size(), flags);
        pending.append(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        return count > 0 || (count < 0 && (errno == EINTR || (flags != 0 && errno == EAGAIN)));
    }

    void sendFrame(Opcode opcode, const std::string& payload) const {
        constexpr std::size_t largestShort = 125;
        constexpr std::size_t largestMiddle = 65535;
        constexpr unsigned char masked = 0x80;
        constexpr unsigned char last = 0x80;
        std::string bytes;
        bytes += static_cast<char>(last | opcode);
        const std::size_t size = payload.size();
        const int width = size <= largestShort ? 0 : size <= largestMiddle ? 2 : 8;
        bytes += static_cast<char>(masked | (width == 0 ? size : width == 2 ? largestShort + 1 : largestShort + 2));
        for (int place = width - 1; place >= 0; --place) {
            bytes += static_cast<char>((size >> (8U * static_cast<unsigned>(place))) & 0xFFU);
        }
        // The mask is zero, so the payload stays as it is.
        bytes += std::string(4, '\0') + payload;
        sendBytes(bytes);
    }

    std::uint64_t numberAt(std::size_t begin, std::size_t width) const {
        std::uint64_t number = 0;
        for (std::size_t place = begin; place < begin + width; ++place) {
            number = number * 256U + static_cast<unsigned char>(pending[place]);
        }
        return number;
    }

    /// The next frame that has come completely. A host masks nothing.
    std::optional<Frame> takeFrame() {
        if (pending.size() < 2) {
            return std::nullopt;
        }
        const std::uint64_t shortSize = numberAt(1, 1) & 0x7FU;
        const std::size_t width = shortSize == 126 ? 2 : shortSize == 127 ? 8 : 0;
        const std::size_t head = 2 + width;
        if (pending.size() < head) {
            return std::nullopt;
        }
        const std::uint64_t size = width == 0 ? shortSize : numberAt(2, width);
        if (pending.size() - head < size) {
            return std::nullopt;
        }
        const auto first = static_cast<unsigned>(numberAt(0, 1));
        Frame frame{first & 0xFU, (first & 0x80U) != 0, pending.substr(head, size)};
        pending.erase(0, head + size);
        return frame;
    }

    const Socket socket;
    std::string pending;
    /// The parts of a message that has not come completely.
    std::string message;
    std::deque<std::string> messages;
    bool isClosed = false;
};

}  // namespace

std::unique_ptr<Channel> pageChannel(const std::string& address, std::chrono::milliseconds timeout) {
    return std::make_unique<PageChannel>(partsOf(address), timeout);
}

}  // namespace SettingsCtl
