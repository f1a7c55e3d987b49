#pragma once

#include <memory>
#include <string>

#include "SettingsHandlerKit/Server.h"
#include "server/loop/EventLoop.h"
#include "simulation/Link.h"
#include "simulation/SimulatedHost.h"

namespace SettingsSimulation {

/// The kit's server without sockets: its connections are in memory, its web port as well.
class MemoryServer : public SettingsHandlerKit::Server {
public:
    explicit MemoryServer(SettingsHandlerKit::ServerOptions options);
    ~MemoryServer();

    /// Serves one more connection.
    std::shared_ptr<MemoryStream> accept(Kind kind, std::shared_ptr<Link> link);
    /// Does the server accept connections?
    bool isListening() const;
    /// A turn of the loop.
    void turn();

private:
    class Listening;

    /// Keeps the loop open, as a listening socket does.
    std::shared_ptr<Listening> listening;
};

}  // namespace SettingsSimulation
