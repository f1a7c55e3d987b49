#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "SettingsHandlerKit/ClientListener.h"
#include "SettingsHandlerKit/Environment.h"
#include "SettingsHandlerKit/Logging.h"
#include "SettingsHandlerKit/TrafficObserver.h"
#include "SettingsHandlerKit/ValueObserver.h"
#include "server/protocol/Clients.h"
#include "server/protocol/History.h"
#include "server/protocol/Queries.h"
#include "server/protocol/SettingObservers.h"
#include "server/sockets/Backlog.h"

namespace SettingsHandlerKit {

class CheckedSettingsHandler;

/// The message transport behind the settings listeners: delivers requests to the handler registered for their type,
/// replies to the requester, events and notices to every client. It knows clients, not sockets. One thread only.
///
/// What changes settings runs inside `received` or `perform`. When that is over, the keys that were reported to
/// `valueChanged` and for which the handler sent no event go to every client as one notice; then the observers in this
/// process are called. A change outside of both is the device's, and announced at once.
class MessageHub : public CommunicationHandler::CommunicationHandlerInterface,
                   public ClientListener,
                   public ValueObserver {
public:
    /// `context` holds the request that is being handled. A reply over `maximumFrameSize` for which `backlog` has no
    /// room is not made; the requester gets the refusal `busy`.
    explicit MessageHub(std::shared_ptr<TrafficObserver> traffic,
                        std::shared_ptr<RequestContext> context = std::make_shared<RequestContext>(),
                        std::shared_ptr<const Backlog> backlog = std::make_shared<Backlog>(),
                        Environment environment = {});

    /// From now on a request that `handler` rejects is reported as such, and one that it refuses for want of memory
    /// gets the refusal `busy`.
    void watch(std::weak_ptr<const CheckedSettingsHandler> handler) {
        checkedHandler = handler;
        queries.watch(std::move(handler));
    }
    /// See `Queries`. It outlives the clients.
    void administer(Administration& administration) { queries.administer(administration); }

    /// Empties the history, as a log-out does.
    void forgetHistory() { history.clear(); }

    void connected(const std::shared_ptr<Client>& client) override;
    void disconnected(const std::shared_ptr<Client>& client, DisconnectReason reason) override;
    /// Takes one frame of `client`: refuses it or delivers it to the handler. An exception of the handler is logged at
    /// level 3.
    void received(const std::shared_ptr<Client>& client, const std::string& frame) override;
    void oversized(const std::shared_ptr<Client>& client) override;
    void refused(Origin origin) override;

    /// Runs `action` with events of `origin`. May be nested: the outermost announces.
    void perform(Origin origin, const std::function<void()>& action);

    /// The observers in this process.
    SettingObservers& observers() { return settingObservers; }

    void valueChanged(const std::string& settingDBId) override;

    /// How many events the handler has sent. It sends one for each value that it accepts.
    unsigned long eventsSent() const { return sequence; }

    std::string sendMessage(int messageType, rapidjson::Document& payload) override;
    void sendResponse(const std::string& messageId, rapidjson::Document& payload) override;
    void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) override;

private:
    void handle(const std::shared_ptr<Client>& client, const std::string& frame);
    void handleRequest(const std::shared_ptr<Client>& client, const rapidjson::Value& request, const std::string& text);
    void handleBatch(const std::shared_ptr<Client>& client, const rapidjson::Document& frame);
    void deliver(const std::shared_ptr<Client>& client, int type, const std::string& frame);
    void seeOutcome(const std::shared_ptr<Client>& client);
    void performed(Origin originBefore);
    void sendNotice();
    void tellObservers();
    std::int64_t now() const;
    void announce(Announcement announcement);

    std::shared_ptr<TrafficObserver> traffic;
    std::shared_ptr<RequestContext> context;
    Environment environment;
    Clients clients;
    History history;
    Queries queries;
    std::map<int, std::function<void(const std::string&)>> handlers;
    std::string messageIdPrefix;
    unsigned long sequence = 0;
    std::weak_ptr<const CheckedSettingsHandler> checkedHandler;

    SettingObservers settingObservers;

    // The request or action that is being handled.
    bool receiving = false;
    unsigned performing = 0;
    Origin currentOrigin = Origin::DEVICE;
    std::shared_ptr<Client> requester;
    int currentType = 0;
    RequestOutcome outcome = RequestOutcome::SILENT;
    std::set<std::string> changedKeys;
    std::set<std::string> announcedKeys;
};

}  // namespace SettingsHandlerKit
