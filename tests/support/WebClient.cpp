#include "support/WebClient.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/ConnectedSocket.h"
#include "support/SendAll.h"

namespace TestSupport {

namespace {

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return text;
}

std::string requestHead(std::uint16_t port, const std::string& target, const std::vector<std::string>& headers) {
    std::string request = "GET " + target + " HTTP/1.1\r\n";
    const bool hasHost = std::any_of(headers.begin(), headers.end(),
                                     [](const auto& line) { return lowerCase(line).rfind("host:", 0) == 0; });
    if (!hasHost) {
        request += "Host: 127.0.0.1:" + std::to_string(port) + "\r\n";
    }
    for (const auto& line : headers) {
        request += line + "\r\n";
    }
    return request;
}

std::string bigEndian(std::uint64_t number, int bytes) {
    std::string text;
    for (int place = bytes - 1; place >= 0; --place) {
        text += static_cast<char>((number >> (8U * static_cast<unsigned>(place))) & 0xFFU);
    }
    return text;
}

std::uint64_t numberFrom(const std::string& bigEndianBytes) {
    std::uint64_t number = 0;
    for (const char byte : bigEndianBytes) {
        number = number * 256U + static_cast<unsigned char>(byte);
    }
    return number;
}

}  // namespace

TcpConnection::TcpConnection(std::uint16_t port, int receiveBuffer) : socket(connectedTcpSocket(port, receiveBuffer)) {}

TcpConnection::~TcpConnection() {
    if (socket >= 0) {
        ::close(socket);
    }
}

void TcpConnection::reset() {
    const linger atOnce{1, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
    ::close(std::exchange(socket, -1));
}

bool TcpConnection::send(const std::string& bytes) {
    return sendAll(socket, bytes);
}

void TcpConnection::finishSending() {
    ::shutdown(socket, SHUT_WR);
}

bool TcpConnection::fill(std::chrono::steady_clock::time_point until) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    pollfd waiting{socket, POLLIN, 0};
    if (ended || ::poll(&waiting, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0))) <= 0) {
        return false;
    }
    std::array<char, 65536> buffer{};
    const ssize_t count = ::recv(socket, buffer.data(), buffer.size(), 0);
    if (count <= 0) {
        ended = true;
        return false;
    }
    pending.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
}

std::optional<std::string> TcpConnection::receive(std::size_t count, std::chrono::milliseconds deadline) {
    const auto until = std::chrono::steady_clock::now() + deadline;
    while (pending.size() < count) {
        if (!fill(until)) {
            return std::nullopt;
        }
    }
    std::string bytes = pending.substr(0, count);
    pending.erase(0, count);
    return bytes;
}

std::optional<std::string> TcpConnection::receiveUntil(const std::string& end, std::chrono::milliseconds deadline) {
    const auto until = std::chrono::steady_clock::now() + deadline;
    while (pending.find(end) == std::string::npos) {
        if (!fill(until)) {
            return std::nullopt;
        }
    }
    return receive(pending.find(end) + end.size());
}

std::string TcpConnection::receiveAll(std::chrono::milliseconds deadline) {
    const auto until = std::chrono::steady_clock::now() + deadline;
    while (fill(until)) {
    }
    return std::exchange(pending, {});
}

HttpResponse askHttp(TcpConnection& connection, const std::string& request, bool expectBody) {
    HttpResponse response;
    connection.send(request + "\r\n");
    const auto head = connection.receiveUntil("\r\n\r\n");
    if (!head) {
        return response;
    }
    std::istringstream lines(*head);
    std::string line;
    std::getline(lines, line);
    response.status = std::stoi(line.substr(line.find(' ')));
    while (std::getline(lines, line) && line != "\r") {
        const std::size_t colon = line.find(':');
        const std::size_t value = line.find_first_not_of(' ', colon + 1);
        response.headers[lowerCase(line.substr(0, colon))] = line.substr(value, line.size() - value - 1);
    }
    const auto length = response.headers.find("content-length");
    if (expectBody && length != response.headers.end()) {
        response.body = connection.receive(std::stoul(length->second)).value_or("(the body did not come)");
    }
    return response;
}

HttpResponse httpGet(std::uint16_t port, const std::string& target, const std::vector<std::string>& headers) {
    TcpConnection connection(port);
    return askHttp(connection, requestHead(port, target, headers));
}

WebSocket::WebSocket(std::uint16_t port, const std::string& target, const std::string& protocol,
                     const std::vector<std::string>& headers, int receiveBuffer)
    : connection(port, receiveBuffer) {
    std::vector<std::string> all{"Connection: Upgrade", "Upgrade: websocket", "Sec-WebSocket-Version: 13",
                                 "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ=="};
    if (!protocol.empty()) {
        all.push_back("Sec-WebSocket-Protocol: " + protocol);
    }
    all.insert(all.end(), headers.begin(), headers.end());
    handshake = askHttp(connection, requestHead(port, target, all));
}

bool WebSocket::sendFrame(int kind, const std::string& payload, bool final) {
    return connection.send(frameBytes(kind, payload, final));
}

std::string WebSocket::frameBytes(int kind, const std::string& payload, bool final) {
    std::string frame(1, static_cast<char>((final ? 0x80 : 0) | kind));
    const std::size_t size = payload.size();
    constexpr int masked = 0x80;
    if (size < 126) {
        frame += static_cast<char>(masked | static_cast<int>(size));
    } else if (size < 65536) {
        frame += static_cast<char>(masked | 126);
        frame += bigEndian(size, 2);
    } else {
        frame += static_cast<char>(masked | 127);
        frame += bigEndian(size, 8);
    }
    const std::string mask = "\x12\x34\x56\x78";
    frame += mask;
    for (std::size_t place = 0; place < size; ++place) {
        frame += static_cast<char>(payload[place] ^ mask[place % mask.size()]);
    }
    return frame;
}

int WebSocket::Message::closeStatus() const {
    return kind == 8 && payload.size() >= 2 ? static_cast<int>(numberFrom(payload.substr(0, 2))) : 0;
}

std::optional<WebSocket::Message> WebSocket::receive(std::chrono::milliseconds deadline) {
    auto message = receiveAny(deadline);
    if (message && message->kind == 1 && witness) {
        witness(message->payload);
    }
    return message;
}

std::optional<WebSocket::Message> WebSocket::receiveAny(std::chrono::milliseconds deadline) {
    const auto until = std::chrono::steady_clock::now() + deadline;
    const auto left = [&] {
        return std::chrono::duration_cast<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    };
    for (;;) {
        const auto head = connection.receive(2, left());
        if (!head) {
            return std::nullopt;
        }
        const bool isLast = ((*head)[0] & 0x80) != 0;
        Message message;
        message.kind = (*head)[0] & 0x0F;
        std::uint64_t size = static_cast<unsigned char>((*head)[1]) & 0x7FU;
        if (size >= 126) {
            size = numberFrom(connection.receive(size == 126 ? 2 : 8, left()).value_or(""));
        }
        const auto payload = connection.receive(size, left());
        if (!payload) {
            return std::nullopt;
        }
        message.payload = *payload;
        if (message.kind == 9 && answerPings) {
            sendFrame(10, message.payload, true);
            continue;
        }
        if (message.kind == 0) {
            message = {parts.kind, parts.payload + message.payload};
        }
        if (isLast) {
            if (message.kind < 8) {
                parts = {};
            }
            return message;
        }
        parts = message;
    }
}

std::optional<std::string> WebSocket::receiveText(std::chrono::milliseconds deadline) {
    const auto message = receive(deadline);
    return message && message->kind == 1 ? std::optional<std::string>(message->payload) : std::nullopt;
}

}  // namespace TestSupport
