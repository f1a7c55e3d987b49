#include "server/web/WebConnections.h"

#include <algorithm>

namespace SettingsHandlerKit {

void WebConnections::authenticate(lws* connection) {
    const auto found = std::find(unauthenticated.begin(), unauthenticated.end(), connection);
    if (found != unauthenticated.end()) {
        unauthenticated.erase(found);
        authenticated.insert(connection);
    }
}

void WebConnections::closed(lws* connection) {
    unauthenticated.erase(std::remove(unauthenticated.begin(), unauthenticated.end(), connection),
                          unauthenticated.end());
    authenticated.erase(connection);
}

bool WebConnections::isUnauthenticated(lws* connection) const {
    return std::find(unauthenticated.begin(), unauthenticated.end(), connection) != unauthenticated.end();
}

}  // namespace SettingsHandlerKit
