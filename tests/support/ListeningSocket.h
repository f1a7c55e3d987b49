#pragma once

#include <cstdint>
#include <string>

namespace TestSupport {

/// A socket that a test creates, for example to pass it to a program. Closed with the object.
class PlainSocket {
public:
    explicit PlainSocket(int open) : number(open) {}
    ~PlainSocket();
    PlainSocket(PlainSocket&& other) noexcept;
    PlainSocket(const PlainSocket&) = delete;
    PlainSocket& operator=(const PlainSocket&) = delete;
    PlainSocket& operator=(PlainSocket&&) = delete;

    int get() const { return number; }
    /// Of a TCP socket.
    std::uint16_t port() const;

private:
    int number;
};

/// A Unix socket at `path`; `path` starts with NUL for an abstract name. `kind`: SOCK_STREAM or SOCK_DGRAM.
PlainSocket boundUnixSocket(const std::string& path, int kind);
PlainSocket listeningUnixSocket(const std::string& path);
/// At any free port.
PlainSocket listeningTcpSocket(const std::string& address);

}  // namespace TestSupport
