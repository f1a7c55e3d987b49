#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "server/web/HttpResponse.h"
#include "server/web/PageFiles.h"
#include "server/web/WebAccess.h"

namespace SettingsHandlerKit {

/// What the web port serves, and to whom.
struct WebSite {
    WebAccess access;
    PageFiles pages;
    /// Paths that need no key, such as "/healthz", with the functions that respond to them.
    std::map<std::string, std::function<HttpResponse()>> endpoints;
    /// The time that the other side may take: to send a request, and to read its response. A WebSocket from which
    /// nothing comes for so long is pinged, and dropped when nothing comes for as long again.
    std::uint16_t timeoutSeconds = 15;

    /// The response to a request for `path` whose Host and Origin are allowed. `isRead`: a GET or HEAD. `isAdmitted`:
    /// the visitor has shown key or cookie.
    HttpResponse responseTo(const WebVisitor& visitor, bool isAdmitted, const std::string& path, bool isRead) const;
};

}  // namespace SettingsHandlerKit
