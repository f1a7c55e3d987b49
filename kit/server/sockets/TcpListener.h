#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "server/sockets/Acceptor.h"
#include "service/Descriptor.h"

namespace SettingsHost {

/// A listening TCP socket that hands its connections on, which send without delay (TCP_NODELAY). It is made for
/// protocols in which the other side speaks first: the kernel holds one that says nothing back for a second. One thread
/// only. The event loop outlives it, and runs once more after `close`.
class TcpListener {
public:
    /// Listens at `address`, numeric, version 4 or 6; port 0 means any free one. Connections wait until `start`.
    /// Errors: `ListenerError`.
    TcpListener(const std::string& address, std::uint16_t port);
    /// Takes over a socket that somebody else made and that listens at a loopback address. Errors: `ListenerError`.
    explicit TcpListener(Descriptor listening);

    /// Numeric.
    const std::string& address() const { return boundAddress; }
    std::uint16_t port() const { return boundPort; }

    /// Hands connections to `taker` from now on, and those that there is no descriptor for to `refuser`.
    void start(EventLoop& loop, Acceptor::OnConnection taker, Acceptor::OnRefused refuser);
    void close();

private:
    void acceptFrom(Descriptor listening);

    std::string boundAddress;
    std::uint16_t boundPort = 0;
    std::optional<Acceptor> acceptor;
};

}  // namespace SettingsHost
