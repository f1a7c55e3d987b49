#include "server/web/WebSocketRoutes.h"

#include <algorithm>
#include <sstream>

namespace SettingsHandlerKit {

bool WebSocketRoutes::hasProtocol(const std::string& name) const {
    return std::any_of(routes.begin(), routes.end(), [&](const auto& route) { return name == route.protocol; });
}

const WebSocketRoute* WebSocketRoutes::find(const std::string& path, const std::string& offeredProtocols) const {
    std::istringstream offered(offeredProtocols);
    std::string protocol;
    do {
        if (!std::getline(offered, protocol, ',')) {
            return nullptr;
        }
        protocol.erase(0, std::min(protocol.find_first_not_of(' '), protocol.size()));
    } while (!hasProtocol(protocol));
    const auto route = std::find_if(routes.begin(), routes.end(), [&](const auto& candidate) {
        return path == candidate.path && protocol == candidate.protocol;
    });
    return route == routes.end() ? nullptr : &*route;
}

std::string WebSocketRoutes::help() const {
    std::string text = "WebSockets are";
    const char* separator = " at ";
    for (const auto& route : routes) {
        text += separator + route.path + " with subprotocol " + route.protocol;
        separator = " and at ";
    }
    return text + ".";
}

}  // namespace SettingsHandlerKit
