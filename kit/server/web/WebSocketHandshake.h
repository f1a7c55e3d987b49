#pragma once

#include <string>

#include "server/web/HttpRequest.h"
#include "server/web/HttpResponse.h"

namespace SettingsHandlerKit {

/// Opens the WebSocket that `request` asks for (status 101) or says what the request lacks.
HttpResponse webSocketHandshake(const HttpRequest& request, const std::string& protocol);

}  // namespace SettingsHandlerKit
