#include "server/web/WebSocketRoutes.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace SettingsHandlerKit {

namespace {

constexpr std::array<WebSocketRoute, 2> routes{settingsRoute, deviceRoute};

/// The first known one of the offered subprotocols; empty when there is none.
std::string chosenProtocol(const std::string& offered) {
    std::istringstream list(offered);
    for (std::string name; std::getline(list, name, ',');) {
        name.erase(0, std::min(name.find_first_not_of(' '), name.size()));
        if (std::any_of(routes.begin(), routes.end(), [&](const auto& route) { return name == route.protocol; })) {
            return name;
        }
    }
    return "";
}

}  // namespace

const WebSocketRoute* webSocketRoute(const std::string& path, const std::string& offeredProtocols) {
    const std::string protocol = chosenProtocol(offeredProtocols);
    const auto* const route = std::find_if(routes.begin(), routes.end(), [&](const auto& candidate) {
        return path == candidate.path && protocol == candidate.protocol;
    });
    return route == routes.end() ? nullptr : route;
}

}  // namespace SettingsHandlerKit
