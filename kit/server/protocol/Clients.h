#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "SettingsHandlerKit/Client.h"
#include "SettingsHandlerKit/TrafficObserver.h"
#include "Wire/FrameInspector.h"
#include "server/sockets/Backlog.h"

namespace SettingsHandlerKit {

/// The connected clients, their names and the frames to them, which are reported to the `TrafficObserver`. One thread
/// only.
class Clients {
public:
    using Frame = std::shared_ptr<const std::string>;

    Clients(std::shared_ptr<TrafficObserver> trafficObserver, std::shared_ptr<const Backlog> backlogOfClients);

    void add(const std::shared_ptr<Client>& client) { names[client]; }
    void remove(const std::shared_ptr<Client>& client) { names.erase(client); }
    bool empty() const { return names.empty(); }

    /// From now on events that `client` causes have this name.
    void setName(const std::shared_ptr<Client>& client, const std::string& name) { names[client] = name; }
    /// Returns: empty when the client has none.
    std::string nameOf(const std::shared_ptr<Client>& client) const;

    void sendToAll(const Frame& frame);
    void sendTo(const std::shared_ptr<Client>& client, const Frame& frame);
    void refuse(const std::shared_ptr<Client>& client, const Wire::Refusal& reason);
    /// Is there room for a large frame? If not, the refusal is `tooMuchQueued()`.
    bool hasRoomFor(std::size_t bytes) const { return backlog->hasRoomFor(bytes); }
    static Wire::Refusal tooMuchQueued();

private:
    std::shared_ptr<TrafficObserver> traffic;
    std::shared_ptr<const Backlog> backlog;
    std::unordered_map<std::shared_ptr<Client>, std::string> names;
};

}  // namespace SettingsHandlerKit
