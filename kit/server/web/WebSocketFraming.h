#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "server/sockets/Framing.h"

struct wslay_event_context;
struct wslay_frame_context;

namespace SettingsHandlerKit {

/// Writes messages as frames of WebSockets, for all clients of a server: so they need no memory of their own for it.
class WebSocketWriter {
public:
    WebSocketWriter();
    ~WebSocketWriter();

    WebSocketWriter(const WebSocketWriter&) = delete;
    WebSocketWriter& operator=(const WebSocketWriter&) = delete;

    /// Adds `size` bytes of a text message from `from` on to `output`.
    void write(const std::string& message, std::size_t from, std::size_t size, std::string& output);

private:
    wslay_frame_context* context = nullptr;
    std::string* sink = nullptr;
};

/// The server's end of a WebSocket: text messages are frames. It answers pings, and what a client may not send with a
/// Close frame that says why: 1002 a violation of the protocol, such as a frame without a mask; 1003 a binary message;
/// 1007 a text that is not UTF-8; 1009 a message over `limit`.
class WebSocketFraming : public Framing {
public:
    /// `input` came after the request for the WebSocket.
    WebSocketFraming(std::size_t limit, std::shared_ptr<WebSocketWriter> writer, std::string input);

    void append(const char* bytes, std::size_t size) override;
    std::size_t room() const override;
    std::size_t size() const override { return input.size() - taken; }
    std::size_t memory() const override;
    std::optional<Frame> next() override;
    bool hasEnded() const override;
    void clear() override;

    void encode(const std::string& frame, std::size_t from, std::size_t size, std::string& output) override {
        writer->write(frame, from, size, output);
    }
    void encodeControl(std::string& output) override;
    std::size_t controlMemory() const override;
    void encodeEnd(std::string& output) override;

    void ping();
    /// Ends the conversation; nothing is sent after its Close frame.
    void close(std::uint16_t status, const std::string& reason);
    /// The same after everything else is sent.
    void closeAtEnd(std::uint16_t status, const std::string& reason);

private:
    struct Callbacks;
    struct Free {
        void operator()(wslay_event_context* context) const;
    };

    void makeContext();
    void frameBegins(unsigned char kind, std::uint64_t size);

    std::size_t limit;
    /// Reads all frames and writes those of the protocol.
    std::unique_ptr<wslay_event_context, Free> context;
    std::shared_ptr<WebSocketWriter> writer;
    std::string input;
    /// How much of the input the library has.
    std::size_t taken = 0;
    /// The rest of the current frame's content.
    std::uint64_t restOfFrame = 0;
    std::string message;
    bool isPartOfMessage = false;
    bool isMessageComplete = false;
    bool isReasonInvalid = false;
    /// Where the library writes the protocol's frames to.
    std::string* sink = nullptr;
    std::uint16_t lastStatus = 0;
    std::string lastReason;
};

}  // namespace SettingsHandlerKit
