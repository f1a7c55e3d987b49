#pragma once

#include <string>

#include "server/web/WebAccess.h"

struct lws;

namespace SettingsHost {

/// Headers longer than this in all are refused.
constexpr std::size_t longestWebRequest = 4096;

/// What the request shows that a connection has sent.
WebVisitor visitorOf(lws* connection);

/// A GET or HEAD?
bool isRead(lws* connection);
bool isHead(lws* connection);

/// What a request for a WebSocket names.
std::string requestedPath(lws* connection);
std::string offeredProtocols(lws* connection);

}  // namespace SettingsHost
