#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/LineReader.h"
#include "support/Witness.h"

namespace TestSupport {

/// A TCP connection to a loopback port that sends and receives raw bytes.
class TcpConnection {
public:
    /// Connects to 127.0.0.1; throws when nobody listens. `receiveBuffer` sets the size of the kernel's buffer unless
    /// 0.
    explicit TcpConnection(std::uint16_t port, int receiveBuffer = 0);
    ~TcpConnection();

    TcpConnection(const TcpConnection&) = delete;
    TcpConnection& operator=(const TcpConnection&) = delete;

    /// Sends all of `bytes`. Returns: false when the other side is gone.
    bool send(const std::string& bytes);
    /// The other side sees the end of the input, and may go on sending.
    void finishSending();
    /// Exactly `count` bytes; nothing when the other side closed before or they did not come in time.
    std::optional<std::string> receive(std::size_t count, std::chrono::milliseconds deadline = waitTimeout);
    /// Up to and with `end`.
    std::optional<std::string> receiveUntil(const std::string& end, std::chrono::milliseconds deadline = waitTimeout);
    /// Everything until the other side closes, or what came in time.
    std::string receiveAll(std::chrono::milliseconds deadline = waitTimeout);
    bool closedByPeer() const { return ended; }
    /// Resets the connection: what the other side sends after that fails. The object must not be used any more.
    void reset();

private:
    bool fill(std::chrono::steady_clock::time_point until);

    int socket;
    std::string pending;
    bool ended = false;
};

struct HttpResponse {
    int status = 0;
    /// By lower-case name.
    std::map<std::string, std::string> headers;
    std::string body;
};

/// Sends `request`, a head without its last blank line, and reads one response. Status 0: there was none.
HttpResponse askHttp(TcpConnection& connection, const std::string& request, bool expectBody = true);

/// GET of `target` over its own connection, with `headers` ("Name: value") besides Host, which is
/// "127.0.0.1:PORT" unless given.
HttpResponse httpGet(std::uint16_t port, const std::string& target, const std::vector<std::string>& headers = {});

/// A WebSocket as a browser opens it.
class WebSocket {
public:
    struct Message {
        /// 1 text, 2 binary, 8 close, 9 ping, 10 pong.
        int kind = 0;
        std::string payload;

        /// The status of a close message; 0 when it has none.
        int closeStatus() const;
    };

    /// Requests an upgrade; `status()` is the result.
    WebSocket(std::uint16_t port, const std::string& target, const std::string& protocol,
              const std::vector<std::string>& headers = {}, int receiveBuffer = 0);

    /// 101 when the WebSocket is open.
    int status() const { return handshake.status; }
    const HttpResponse& answer() const { return handshake; }

    bool sendText(const std::string& text) { return sendFrame(1, text, true); }
    /// `kind` 0 continues a message; `final` ends it.
    bool sendFrame(int kind, const std::string& payload, bool final);
    /// The bytes of such a frame, masked.
    static std::string frameBytes(int kind, const std::string& payload, bool final);
    bool sendRaw(const std::string& bytes) { return connection.send(bytes); }

    /// The next message. Replies to pings unless `answerPings` is false.
    std::optional<Message> receive(std::chrono::milliseconds deadline = waitTimeout);
    /// The next message if it is a text; nothing when it is not or there is none in time.
    std::optional<std::string> receiveText(std::chrono::milliseconds deadline = waitTimeout);
    bool closedByPeer() const { return connection.closedByPeer(); }
    void reset() { connection.reset(); }

    bool answerPings = true;

protected:
    /// Of text messages.
    Witness witness;

private:
    std::optional<Message> receiveAny(std::chrono::milliseconds deadline);

    TcpConnection connection;
    HttpResponse handshake;
    /// The fragments received so far of an incomplete message.
    Message parts;
};

}  // namespace TestSupport
