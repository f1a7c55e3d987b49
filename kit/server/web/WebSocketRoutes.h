#pragma once

#include <string>

#include "SettingsHandlerKit/Client.h"

namespace SettingsHandlerKit {

/// Where a WebSocket is opened, with which subprotocol, and the origin of its clients.
struct WebSocketRoute {
    const char* path;
    const char* protocol;
    Origin origin;
};

constexpr WebSocketRoute settingsRoute{"/settings", "settings.v1", Origin::PAGE};
constexpr WebSocketRoute deviceRoute{"/device", "device.v1", Origin::DEVICE};

/// The route of `path`, if its subprotocol is the first known one of `offeredProtocols`; null when there is none.
const WebSocketRoute* webSocketRoute(const std::string& path, const std::string& offeredProtocols);

}  // namespace SettingsHandlerKit
