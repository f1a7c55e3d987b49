#include "host/EndToEndServers.h"

#include <string>

namespace Benchmarks {

EchoServer::EchoServer(Storage storage) : Server(storage) {
    port = static_cast<std::uint16_t>(std::stoi(start({ECHO_UPSERT, socket(), database()})));
}

std::unique_ptr<FrameConnection> EchoServer::connect(Listener listener) {
    return listener == Listener::UNIX_SOCKET ? connectToSocket(socket()) : connectToWebSocket(port, "/", "echo");
}

FanOutServer::FanOutServer(Listener listener, std::size_t clients) : Server(Storage::MEMORY) {
    std::vector<std::string> arguments{FAN_OUT_FLOOR, std::to_string(clients)};
    if (listener == Listener::UNIX_SOCKET) {
        arguments.push_back(socket());
    }
    port = static_cast<std::uint16_t>(std::stoi(start(arguments)));
}

std::unique_ptr<FrameConnection> FanOutServer::connect(Listener listener) {
    return listener == Listener::UNIX_SOCKET ? connectToSocket(socket()) : connectToPort(port);
}

}  // namespace Benchmarks
