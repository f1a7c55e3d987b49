#pragma once

struct lws;
struct lws_protocol_vhost_options;

namespace SettingsHandlerKit {

/// Headers of every answer, the library's own refusals included.
const lws_protocol_vhost_options* securityHeaders();

/// Adds them to the answer that opens a WebSocket; `headOfAnswer` comes with LWS_CALLBACK_ADD_HEADERS. Returns: false
/// when there is no room.
bool addSecurityHeaders(lws* connection, void* headOfAnswer);

}  // namespace SettingsHandlerKit
