#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/client/Server.h"

namespace Benchmarks {

/// Echoes frames after storing them, see EchoUpsert.cpp.
class EchoServer : public Server {
public:
    explicit EchoServer(Storage storage);

    std::unique_ptr<FrameConnection> connect(Listener listener) override;

private:
    std::uint16_t port = 0;
};

/// Sends what its first client says to all, see FanOutFloor.cpp. Over TCP in place of a WebSocket.
class FanOutServer : public Server {
public:
    FanOutServer(Listener listener, std::size_t clients);

    std::unique_ptr<FrameConnection> connect(Listener listener) override;

private:
    std::uint16_t port = 0;
};

}  // namespace Benchmarks
