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

class MemoryServer::Listening : public SettingsHandlerKit::UvHandle<uv_async_t, Listening> {};

MemoryServer::MemoryServer(SettingsHandlerKit::ServerOptions options)
    : Server(withoutSockets(std::move(options))), listening(std::make_shared<Listening>()) {
    parts->webAddress = {"127.0.0.1", 8097};
    uv_async_init(parts->loop.handle(), listening->get(), nullptr);
    listening->opened(listening);
}

MemoryServer::~MemoryServer() {
    listening->closeHandle();
}

std::shared_ptr<MemoryStream> MemoryServer::accept(Kind kind, std::shared_ptr<Link> link) {
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

void MemoryServer::turn() {
    process();
    if (!isListening()) {
        listening->closeHandle();
    }
}

}  // namespace SettingsSimulation
