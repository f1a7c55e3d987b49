#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_set>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "SettingsHandlerKit/ValueObserver.h"
#include "server/protocol/TrafficObserver.h"
#include "server/sockets/Backlog.h"
#include "server/sockets/ClientListener.h"
#include "service/logging/RequestContext.h"

namespace Wire {
struct Refusal;
}

namespace SettingsHandlerKit {

class HandlerCache;

/// The message transport behind the settings listeners: delivers requests to the handler registered for their type,
/// replies to the requester, events and notices to every client. It knows clients, not sockets. One thread only.
///
/// Everything that may change settings runs inside `received` or `perform`. When that is over, the keys that were
/// reported to `valueChanged` and for which the handler sent no event go to every client as one notice.
class MessageHub : public CommunicationHandler::CommunicationHandlerInterface,
                   public ClientListener,
                   public ValueObserver {
public:
    /// `context` holds the request that is being handled. A reply over `maximumFrameSize` for which `backlog` has no
    /// room is not made; the requester gets the refusal `busy`.
    explicit MessageHub(std::shared_ptr<TrafficObserver> traffic,
                        std::shared_ptr<RequestContext> context = std::make_shared<RequestContext>(),
                        std::shared_ptr<const Backlog> backlog = std::make_shared<Backlog>());

    /// From now on `cache` is kept within its limit after each request, as long as it lives.
    void bound(std::weak_ptr<HandlerCache> cache) { handlerCache = std::move(cache); }

    void connected(const std::shared_ptr<Client>& client) override;
    void disconnected(const std::shared_ptr<Client>& client, DisconnectReason reason) override;
    /// Takes one frame of `client`: refuses it, rejects it (logged at level 3) or delivers it to the handler. An
    /// exception of the handler is logged at level 3.
    void received(const std::shared_ptr<Client>& client, const std::string& frame) override;
    void oversized(const std::shared_ptr<Client>& client) override;
    void refused(Origin origin) override;

    /// Runs `action` with events of `origin`.
    void perform(Origin origin, const std::function<void()>& action);

    void valueChanged(const std::string& settingDBId) override;

    /// How many events the handler has sent. It sends one for each value that it accepts.
    unsigned long eventsSent() const { return sequence; }

    std::string sendMessage(int messageType, rapidjson::Document& payload) override;
    void sendResponse(const std::string& messageId, rapidjson::Document& payload) override;
    void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) override;

private:
    void handle(const std::shared_ptr<Client>& client, const std::string& frame);
    void deliver(const std::shared_ptr<Client>& client, int type, const std::string& frame);
    void boundCache();
    void sendNotice();
    void sendToAll(std::string frame);
    void sendTo(Client& client, std::string frame);
    void refuse(Client& client, const Wire::Refusal& reason);

    std::shared_ptr<TrafficObserver> traffic;
    std::shared_ptr<RequestContext> context;
    std::shared_ptr<const Backlog> backlog;
    std::map<int, std::function<void(const std::string&)>> handlers;
    std::unordered_set<std::shared_ptr<Client>> clients;
    std::string messageIdPrefix;
    unsigned long sequence = 0;
    std::weak_ptr<HandlerCache> handlerCache;

    // The request or action that is being handled.
    Origin currentOrigin = Origin::DEVICE;
    std::shared_ptr<Client> requester;
    int currentType = 0;
    RequestOutcome outcome = RequestOutcome::SILENT;
    std::set<std::string> changedKeys;
    std::set<std::string> announcedKeys;
};

}  // namespace SettingsHandlerKit
