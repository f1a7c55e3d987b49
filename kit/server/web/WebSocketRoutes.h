#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/ClientListener.h"

namespace SettingsHandlerKit {

/// Where a WebSocket is opened, with which subprotocol, the origin of its clients and who is notified of them.
struct WebSocketRoute {
    std::string path;
    std::string protocol;
    Origin origin;
    std::reference_wrapper<ClientListener> clients;
};

/// The WebSockets of a web port.
class WebSocketRoutes {
public:
    explicit WebSocketRoutes(std::vector<WebSocketRoute> itsRoutes) : routes(std::move(itsRoutes)) {}

    /// The route of `path`, if its subprotocol is the first known one of `offeredProtocols`; null when there is none.
    const WebSocketRoute* find(const std::string& path, const std::string& offeredProtocols) const;
    /// A sentence that names all of them.
    std::string help() const;

private:
    bool hasProtocol(const std::string& name) const;

    std::vector<WebSocketRoute> routes;
};

}  // namespace SettingsHandlerKit
