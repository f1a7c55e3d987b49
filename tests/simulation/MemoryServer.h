#pragma once

#include <memory>
#include <string>

#include "SettingsHandlerKit/Server.h"
#include "simulation/Link.h"
#include "simulation/SimulatedHost.h"

namespace SettingsSimulation {

/// The kit's server without sockets: its connections are in memory, its web port as well.
class MemoryServer : public SettingsHandlerKit::Server {
public:
    explicit MemoryServer(SettingsHandlerKit::ServerOptions options);

    /// Serves one more connection.
    std::shared_ptr<MemoryStream> accept(Kind kind, std::shared_ptr<Link> link);
    /// Does the server accept connections?
    bool isListening() const;
};

}  // namespace SettingsSimulation
