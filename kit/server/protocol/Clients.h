#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "SettingsHandlerKit/Client.h"
#include "SettingsHandlerKit/TrafficObserver.h"
#include "Wire/FrameInspector.h"
#include "server/protocol/History.h"
#include "server/sockets/Backlog.h"

namespace SettingsHandlerKit {

/// The connected clients, their names and the frames to them, each of which is reported to the `TrafficObserver` when
/// it is sent. One thread only.
class Clients {
public:
    Clients(std::shared_ptr<TrafficObserver> trafficObserver, std::shared_ptr<const Backlog> backlogOfClients);

    void add(const std::shared_ptr<Client>& client) { names[client]; }
    void remove(const std::shared_ptr<Client>& client) { names.erase(client); }
    bool empty() const { return names.empty(); }

    /// From now on events that `client` causes have this name.
    void setName(const std::shared_ptr<Client>& client, const std::string& name) { names[client] = name; }
    /// Returns: empty when the client has none.
    std::string nameOf(const std::shared_ptr<Client>& client) const;

    void sendToAll(const SharedFrame& frame);
    void sendTo(const std::shared_ptr<Client>& client, const SharedFrame& frame);
    /// Sends a refusal; `index` is that of a request in a batch.
    void refuse(const std::shared_ptr<Client>& client, const Wire::Refusal& reason,
                std::optional<std::size_t> index = std::nullopt);

    /// May a reply of this size be sent? Up to `maximumFrameSize` always, unless frames are held: what a batch leads to
    /// must not make its client too slow. If not, the refusal is `tooMuchQueued()`.
    bool hasRoomFor(std::size_t bytes) const;
    static Wire::Refusal tooMuchQueued();

    /// From now on frames are held, until `sendHeld`.
    void hold();
    /// Forgets those that are held so far.
    void dropHeld();
    /// Sends them in their order, and holds none from now on.
    void sendHeld();

private:
    struct Held {
        /// Null for all.
        std::shared_ptr<Client> receiver;
        SharedFrame frame;
        /// Of a refusal.
        std::string code;
    };

    void send(const Held& message);

    std::shared_ptr<TrafficObserver> traffic;
    std::shared_ptr<const Backlog> backlog;
    std::unordered_map<std::shared_ptr<Client>, std::string> names;
    std::optional<std::vector<Held>> held;
    std::size_t heldBytes = 0;
};

}  // namespace SettingsHandlerKit
