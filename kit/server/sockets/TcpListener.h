#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "SettingsHandlerKit/Descriptor.h"
#include "server/sockets/Acceptor.h"

namespace SettingsHandlerKit {

/// A listening TCP socket whose connections send without delay (TCP_NODELAY). It is for protocols in which the client
/// sends first: the kernel holds back a connection that sends nothing for a second (TCP_DEFER_ACCEPT). One thread only.
/// The event loop outlives it, and runs once more after `close`.
class TcpListener {
public:
    /// Listens at `address`, numeric, version 4 or 6; port 0 means any free one. Connections wait until `start`.
    /// Errors: `ListenerError`.
    TcpListener(const std::string& address, std::uint16_t port);
    /// Takes over a passed socket that listens at a loopback address. Errors: `ListenerError`.
    explicit TcpListener(Descriptor listening);

    /// Numeric.
    const std::string& address() const { return boundAddress; }
    std::uint16_t port() const { return boundPort; }

    /// From now on passes connections to `taker`, and those for which there is no descriptor to `refuser`.
    void start(EventLoop& loop, Acceptor::OnConnection taker, Acceptor::OnRefused refuser);
    void close();
    /// The socket once more. It still listens when this one is closed.
    Descriptor duplicate() { return acceptor->duplicate(); }

private:
    void acceptFrom(Descriptor listening);

    std::string boundAddress;
    std::uint16_t boundPort = 0;
    std::optional<Acceptor> acceptor;
};

}  // namespace SettingsHandlerKit
