#include "server/web/WebConnections.h"

#include <algorithm>

namespace SettingsHost {

void WebConnections::admitted(lws* connection) {
    const auto stranger = std::find(strangers.begin(), strangers.end(), connection);
    if (stranger != strangers.end()) {
        strangers.erase(stranger);
        guests.insert(connection);
    }
}

void WebConnections::left(lws* connection) {
    strangers.erase(std::remove(strangers.begin(), strangers.end(), connection), strangers.end());
    guests.erase(connection);
}

bool WebConnections::isStranger(lws* connection) const {
    return std::find(strangers.begin(), strangers.end(), connection) != strangers.end();
}

}  // namespace SettingsHost
