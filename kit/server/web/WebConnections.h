#pragma once

#include <cstddef>
#include <unordered_set>
#include <vector>

#include "server/sockets/DoorEvents.h"

struct lws;

namespace SettingsHost {

/// Who is connected at the web port. Whoever has shown neither key nor cookie yet is a stranger. There are few places
/// for strangers, so that they cannot take those of others.
class WebConnections {
public:
    static constexpr std::size_t maximumStrangers = 32;

    void arrived(lws* connection) { strangers.push_back(connection); }
    /// It has shown key or cookie.
    void admitted(lws* connection);
    void left(lws* connection);

    bool isStranger(lws* connection) const;
    /// Is there room for one more stranger?
    bool haveRoom() const {
        return strangers.size() < maximumStrangers && strangers.size() + guests.size() < maximumClients;
    }
    /// Null when there is none.
    lws* oldestStranger() const { return strangers.empty() ? nullptr : strangers.front(); }

    /// What all except `staying` have shown is worth nothing any more.
    template <typename Staying>
    void forgetGuests(const Staying& staying) {
        for (auto guest = guests.begin(); guest != guests.end();) {
            if (staying(*guest)) {
                ++guest;
            } else {
                strangers.push_back(*guest);
                guest = guests.erase(guest);
            }
        }
    }

private:
    /// The oldest first. So few that looking through them costs nothing.
    std::vector<lws*> strangers;
    std::unordered_set<lws*> guests;
};

}  // namespace SettingsHost
