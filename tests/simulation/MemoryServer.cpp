#include "simulation/MemoryServer.h"

#include <utility>

#include "server/ServerParts.h"

namespace SettingsSimulation {

namespace {

SettingsHandlerKit::ServerOptions withoutSockets(SettingsHandlerKit::ServerOptions options) {
    options.socketPath = std::nullopt;
    options.listen = std::nullopt;
    return options;
}

}  // namespace

MemoryServer::MemoryServer(SettingsHandlerKit::ServerOptions options) : Server(withoutSockets(std::move(options))) {
    parts->webAddress = {"127.0.0.1", 8097};
}

std::shared_ptr<MemoryStream> MemoryServer::accept(Kind kind, std::shared_ptr<Link> link) {
    // As after every wait, the loop's time is now.
    parts->loop.timeout();
    auto stream = MemoryStream::open(parts->loop, std::move(link));
    if (kind == Kind::PAGE) {
        parts->webServer->serve(stream);
    } else {
        parts->endpoints.at(kind == Kind::SOCKET ? 0 : 1).listener->serve(stream);
    }
    return stream;
}

bool MemoryServer::isListening() const {
    return parts->phase == Parts::Phase::SERVING;
}

}  // namespace SettingsSimulation
