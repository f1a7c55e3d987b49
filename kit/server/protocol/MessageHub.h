#pragma once

#include <functional>
#include <memory>
#include <string>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "SettingsHandlerKit/ClientListener.h"
#include "SettingsHandlerKit/Environment.h"
#include "SettingsHandlerKit/Logging.h"
#include "SettingsHandlerKit/TrafficObserver.h"
#include "SettingsHandlerKit/ValueObserver.h"
#include "server/protocol/Announcements.h"
#include "server/protocol/Batches.h"
#include "server/protocol/Clients.h"
#include "server/protocol/History.h"
#include "server/protocol/Queries.h"
#include "server/protocol/Requests.h"
#include "server/protocol/SettingObservers.h"
#include "server/protocol/Transactions.h"
#include "server/sockets/Backlog.h"

namespace SettingsHandlerKit {

/// The message transport behind the settings listeners: takes the clients' frames, delivers requests to the handler
/// registered for their type, sends replies to the requester, events and notices to every client. It knows clients, not
/// sockets. One thread only.
class MessageHub : public CommunicationHandler::CommunicationHandlerInterface,
                   public ClientListener,
                   public ValueObserver {
public:
    /// `context` holds the request that is being handled. `backlog` has room for large replies or not.
    explicit MessageHub(std::shared_ptr<TrafficObserver> traffic,
                        std::shared_ptr<RequestContext> context = std::make_shared<RequestContext>(),
                        std::shared_ptr<const Backlog> backlog = std::make_shared<Backlog>(),
                        const Environment& environment = {});

    /// From now on requests are answered with the outcomes of `handler`; one that it rejects is reported as such, and
    /// one that it refuses for lack of memory gets the refusal `busy`.
    void watch(std::weak_ptr<CheckedSettingsHandler> handler) {
        queries.watch(handler);
        requests.watch(std::move(handler));
    }
    /// From now on the changes of a batch are stored together.
    void use(std::shared_ptr<Transactions> transactions) { batches.use(std::move(transactions)); }

    /// From now on page, backup and status are answered; `administration` outlives the clients.
    void administer(Administration& administration) { queries.administer(administration); }
    /// Empties the history, as a log-out does.
    void forgetHistory() { history.clear(); }

    void connected(const std::shared_ptr<Client>& client) override;
    void disconnected(const std::shared_ptr<Client>& client, DisconnectReason reason) override;
    /// Takes one frame of `client`: refuses it, or handles it as a request, a batch or a query. An exception of the
    /// handler is logged at level 3.
    void received(const std::shared_ptr<Client>& client, const std::string& frame) override;
    void oversized(const std::shared_ptr<Client>& client) override;
    void refused(Origin origin) override;

    /// Runs `action` with events of `origin`. May be nested: the outermost announces.
    void perform(Origin origin, const std::function<void()>& action);

    /// The observers in this process.
    SettingObservers& observers() { return announcements.observers(); }

    void valueChanged(const std::string& settingDBId) override;

    /// How many events the handler has sent. It sends one for each value that it accepts.
    unsigned long eventsSent() const { return announcements.newest(); }

    std::string sendMessage(int messageType, rapidjson::Document& payload) override;
    void sendResponse(const std::string& messageId, rapidjson::Document& payload) override;
    void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) override;

private:
    void handle(const std::shared_ptr<Client>& client, const std::string& frame);

    std::shared_ptr<TrafficObserver> traffic;
    History history;
    Clients clients;
    Announcements announcements;
    Requests requests;
    Batches batches{clients, announcements, requests};
    Queries queries;
};

}  // namespace SettingsHandlerKit
