#include "simulation/ClientEnd.h"

#include <utility>

#include "support/WebClient.h"

namespace SettingsSimulation {

namespace {

constexpr int text = 1;
constexpr int closing = 8;
constexpr int ping = 9;
constexpr int pong = 10;

std::size_t numberAt(const std::string& bytes, std::size_t start, std::size_t count) {
    std::size_t number = 0;
    for (std::size_t place = start; place < start + count; ++place) {
        number = number * 256 + static_cast<unsigned char>(bytes[place]);
    }
    return number;
}

}  // namespace

void ClientEnd::send(const std::string& frame) {
    if (ownKind == Kind::PAGE) {
        sendBytes(TestSupport::WebSocket::frameBytes(text, frame, true));
    } else {
        sendBytes(frame + "\n");
    }
}

void ClientEnd::sendBytes(const std::string& bytes) {
    if (!link->clientGone && !link->hostGone && !link->inputOver) {
        link->toHost += bytes;
    }
}

void ClientEnd::close() {
    link->inputOver = true;
    link->clientGone = true;
    link->toClient.clear();
}

void ClientEnd::openWebSocket(const std::string& pageAddress) {
    // Sent before what the client has sent already.
    link->toHost.insert(0, "GET /settings" + pageAddress.substr(pageAddress.rfind('?')) +
                               " HTTP/1.1\r\nHost: 127.0.0.1:8097\r\nConnection: Upgrade\r\nUpgrade: websocket\r\n"
                               "Sec-WebSocket-Key: MDEyMzQ1Njc4OWFiY2RlZg==\r\nSec-WebSocket-Version: 13\r\n"
                               "Sec-WebSocket-Protocol: settings.v1\r\n\r\n");
}

std::string ClientEnd::receive(std::size_t size) {
    std::string bytes = link->toClient.substr(0, size);
    link->toClient.erase(0, size);
    input += bytes;
    while (takeFrame()) {
    }
    return bytes;
}

bool ClientEnd::takeFrame() {
    if (ownKind != Kind::PAGE) {
        return takeLine();
    }
    return isUpgraded ? takeMessage() : takeHead();
}

bool ClientEnd::takeLine() {
    const std::size_t end = input.find('\n');
    if (end == std::string::npos) {
        return false;
    }
    frames.push_back(input.substr(0, end));
    input.erase(0, end + 1);
    return true;
}

bool ClientEnd::takeHead() {
    const std::string blankLine = "\r\n\r\n";
    const std::size_t end = input.find(blankLine);
    if (end == std::string::npos) {
        return false;
    }
    if (input.rfind("HTTP/1.1 101 ", 0) != 0) {
        // The host closes the connection after that, such as when the key was replaced meanwhile.
        input.clear();
        return false;
    }
    isUpgraded = true;
    input.erase(0, end + blankLine.size());
    return true;
}

/// What a host sends is not masked.
bool ClientEnd::takeMessage() {
    std::size_t head = 2;
    if (input.size() < head) {
        return false;
    }
    const auto first = static_cast<unsigned char>(input[0]);
    std::size_t size = static_cast<unsigned char>(input[1]);
    if (size >= 126) {
        const std::size_t bytes = size == 126 ? 2 : 8;
        if (input.size() < head + bytes) {
            return false;
        }
        size = numberAt(input, head, bytes);
        head += bytes;
    }
    if (input.size() < head + size) {
        return false;
    }
    std::string payload = input.substr(head, size);
    input.erase(0, head + size);
    messageArrived(static_cast<int>(first & 0x0fU), (first & 0x80U) != 0, std::move(payload));
    return true;
}

void ClientEnd::messageArrived(int kind, bool isFinal, std::string payload) {
    switch (kind) {
        case closing:
            webSocketStatus = payload.size() < 2 ? 1005 : static_cast<int>(numberAt(payload, 0, 2));
            sendBytes(TestSupport::WebSocket::frameBytes(closing, payload.substr(0, 2), true));
            link->inputOver = true;
            break;
        case ping:
            sendBytes(TestSupport::WebSocket::frameBytes(pong, payload, true));
            break;
        case pong:
            break;
        default:
            fragments += payload;
            if (isFinal) {
                frames.push_back(std::exchange(fragments, {}));
            }
    }
}

}  // namespace SettingsSimulation
