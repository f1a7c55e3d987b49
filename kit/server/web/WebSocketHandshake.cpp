#include "server/web/WebSocketHandshake.h"

#include <array>
#include <stdexcept>

#include <openssl/evp.h>

namespace SettingsHandlerKit {

namespace {

/// A key is 16 bytes in base64.
bool isWebSocketKey(const std::string& key) {
    constexpr std::size_t size = 24;
    const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    return key.size() == size && key.find_first_not_of(digits) == size - 2 && key.compare(size - 2, 2, "==") == 0;
}

std::string acceptValue(const std::string& key) {
    const std::string text = key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    if (EVP_Digest(text.data(), text.size(), digest.data(), &size, EVP_sha1(), nullptr) != 1) {
        throw std::runtime_error("cannot accept a WebSocket");
    }
    std::array<unsigned char, 2UL * EVP_MAX_MD_SIZE> encoded{};
    const int length = EVP_EncodeBlock(encoded.data(), digest.data(), static_cast<int>(size));
    return {encoded.begin(), encoded.begin() + length};
}

}  // namespace

HttpResponse webSocketHandshake(const HttpRequest& request, const std::string& protocol) {
    if (request.webSocketVersion != "13") {
        HttpResponse refusal = plainResponse(426, "WebSockets have version 13 here.");
        refusal.headers = "sec-websocket-version: 13\r\n";
        return refusal;
    }
    if (!isWebSocketKey(request.webSocketKey)) {
        return plainResponse(400, "The Sec-WebSocket-Key is missing or not valid.");
    }
    HttpResponse response;
    response.status = 101;
    response.headers =
        "connection: Upgrade\r\nupgrade: websocket\r\nsec-websocket-accept: " + acceptValue(request.webSocketKey) +
        "\r\nsec-websocket-protocol: " + protocol + "\r\n";
    return response;
}

}  // namespace SettingsHandlerKit
