#pragma once

#include <cstddef>
#include <unordered_set>
#include <vector>

#include "server/sockets/ListenerLimits.h"

namespace SettingsHandlerKit {

class ByteStream;

/// The connections at the web port. One that has shown neither key nor cookie is unauthenticated. Few of those are
/// kept, so that they cannot use up the places of others.
class WebConnections {
public:
    static constexpr std::size_t maximumUnauthenticated = 32;

    void opened(const ByteStream* connection) { unauthenticated.push_back(connection); }
    /// The connection has shown key or cookie.
    void authenticate(const ByteStream* connection);
    void closed(const ByteStream* connection);

    bool isUnauthenticated(const ByteStream* connection) const;
    /// Is there room for one more unauthenticated connection?
    bool haveRoom() const {
        return unauthenticated.size() < maximumUnauthenticated &&
               unauthenticated.size() + authenticated.size() < maximumClients;
    }
    /// Null when there is none.
    const ByteStream* oldestUnauthenticated() const { return unauthenticated.empty() ? nullptr : unauthenticated.front(); }

    /// All except `staying` are unauthenticated from now on.
    template <typename Staying>
    void forgetAuthentication(const Staying& staying) {
        for (auto connection = authenticated.begin(); connection != authenticated.end();) {
            if (staying(*connection)) {
                ++connection;
            } else {
                unauthenticated.push_back(*connection);
                connection = authenticated.erase(connection);
            }
        }
    }

private:
    /// The oldest first. So few that a linear search costs nothing.
    std::vector<const ByteStream*> unauthenticated;
    std::unordered_set<const ByteStream*> authenticated;
};

}  // namespace SettingsHandlerKit
