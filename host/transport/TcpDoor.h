#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "transport/Descriptor.h"
#include "transport/EventLoop.h"

namespace SettingsHost {

/// A listening TCP socket that hands its connections on. One thread only. The event loop outlives it, and runs once
/// more after `close`.
class TcpDoor {
public:
    /// Takes a connected, non-blocking descriptor over.
    using Taker = std::function<void(int descriptor)>;

    /// Listens at `address`, numeric, version 4 or 6; port 0 means any free one. Connections wait until `start`.
    /// Errors: `DoorError`.
    TcpDoor(const std::string& address, std::uint16_t port);
    /// Takes over a socket that somebody else made and that listens at a loopback address. Errors: `DoorError`.
    explicit TcpDoor(Descriptor listening);
    ~TcpDoor();

    TcpDoor(const TcpDoor&) = delete;
    TcpDoor& operator=(const TcpDoor&) = delete;

    /// Numeric.
    const std::string& address() const { return boundAddress; }
    std::uint16_t port() const { return boundPort; }

    /// Hands connections to `taker` from now on. At the limit of descriptors, connections are closed as they arrive.
    void start(EventLoop& loop, Taker taker);
    void close();

private:
    class Watch;
    void readAddress();
    void accept();
    void turnAway();

    Descriptor descriptor;
    /// Given up for a moment to turn a connection away when there is no other descriptor left.
    Descriptor spare;
    std::string boundAddress;
    std::uint16_t boundPort = 0;
    Taker take;
    std::shared_ptr<Watch> watch;
};

}  // namespace SettingsHost
