#pragma once

#include <string>

#include "server/web/WebAccess.h"

struct lws;

namespace SettingsHandlerKit {

/// Headers longer than this in all are refused.
constexpr std::size_t longestWebRequest = 4096;

/// The visitor that the request of a connection shows.
WebVisitor visitorOf(lws* connection);

/// A GET or HEAD?
bool isRead(lws* connection);
bool isHead(lws* connection);

/// Path and subprotocols of a request for a WebSocket.
std::string requestedPath(lws* connection);
std::string offeredProtocols(lws* connection);

}  // namespace SettingsHandlerKit
