#pragma once

#include <string>

#include "server/web/HttpAnswer.h"
#include "server/web/HttpRequest.h"

namespace SettingsHandlerKit {

/// Opens the WebSocket that `request` asks for (status 101) or says what the request lacks.
HttpAnswer webSocketHandshake(const HttpRequest& request, const std::string& protocol);

}  // namespace SettingsHandlerKit
