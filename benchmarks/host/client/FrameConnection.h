#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Benchmarks {

/// A connection on which frames come and go, with as little of its own between a measurement and the kernel as can be:
/// it waits in the kernel, and copies nothing. Errors: `std::runtime_error`, also when nothing
/// comes for 20 s.
class FrameConnection {
public:
    virtual ~FrameConnection();

    FrameConnection(const FrameConnection&) = delete;
    FrameConnection& operator=(const FrameConnection&) = delete;

    /// What carries `frame` over this connection, made beforehand so that making it is not measured.
    virtual std::string bytesOf(std::string_view frame) const = 0;

    void send(const std::string& bytes);
    /// Waits for the next frame; what is returned is valid until the next call.
    std::string_view receive();

protected:
    /// Owns `connectedSocket`.
    explicit FrameConnection(int connectedSocket);

    struct Taken {
        std::string_view frame;
        /// How many bytes it took; 0 when it is not whole yet.
        std::size_t size = 0;
    };
    /// The first frame in `bytes`.
    virtual Taken take(std::string_view bytes) = 0;
    /// Receives exactly up to and with `end`.
    std::string receiveUntil(std::string_view end);

private:
    void fill();
    bool next(std::string_view& frame);

    int socket;
    std::string buffer;
    std::size_t start = 0;
    std::size_t end = 0;
};

/// One frame a line: at a Unix socket, or at a TCP port of 127.0.0.1.
std::unique_ptr<FrameConnection> connectToSocket(const std::string& path);
std::unique_ptr<FrameConnection> connectToPort(std::uint16_t port);

/// A WebSocket at 127.0.0.1, one frame a text message.
std::unique_ptr<FrameConnection> connectToWebSocket(std::uint16_t port, const std::string& target,
                                                    const std::string& protocol);

}  // namespace Benchmarks
