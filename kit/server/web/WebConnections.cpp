#include "server/web/WebConnections.h"

#include <algorithm>

namespace SettingsHandlerKit {

void WebConnections::authenticate(const ByteStream* connection) {
    const auto found = std::find(unauthenticated.begin(), unauthenticated.end(), connection);
    if (found != unauthenticated.end()) {
        unauthenticated.erase(found);
        authenticated.insert(connection);
    }
}

void WebConnections::closed(const ByteStream* connection) {
    unauthenticated.erase(std::remove(unauthenticated.begin(), unauthenticated.end(), connection),
                          unauthenticated.end());
    authenticated.erase(connection);
}

bool WebConnections::isUnauthenticated(const ByteStream* connection) const {
    return std::find(unauthenticated.begin(), unauthenticated.end(), connection) != unauthenticated.end();
}

}  // namespace SettingsHandlerKit
