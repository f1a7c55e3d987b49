#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerKit/Client.h"
#include "SettingsHandlerKit/Logging.h"
#include "SettingsHandlerKit/TrafficObserver.h"
#include "Utils/Rapidjson.h"
#include "Wire/FrameInspector.h"
#include "server/protocol/Announcements.h"
#include "server/protocol/Clients.h"

namespace SettingsHandlerKit {

/// A request as a client sent it, alone or in a batch.
struct Request {
    const std::shared_ptr<Client>& client;
    /// What `text` holds.
    const rapidjson::Value& members;
    const std::string& text;
    /// Its place in the batch.
    std::optional<std::size_t> index;
};

/// Delivers requests to the handler that is registered for their type, sends its replies to the requester, and answers
/// the requests that ask for it. One thread only.
class Requests {
public:
    /// What is done with a request.
    enum class Delivery {
        NORMAL,
        /// It was delivered before, in a batch that could not be stored: SetSettings is only answered, the others are
        /// delivered again, and nothing is counted.
        AFTER_FAILED_BATCH,
    };

    /// `requestContext` holds the request that is being handled. References outlive it.
    Requests(Clients& allClients, Announcements& itsAnnouncements, std::shared_ptr<TrafficObserver> trafficObserver,
             std::shared_ptr<RequestContext> requestContext);

    /// From now on the outcomes of this handler are known: requests are answered, and reported as rejected.
    void watch(std::weak_ptr<CheckedSettingsHandler> handler) { checkedHandler = std::move(handler); }
    void registerHandler(int type, std::function<void(const std::string&)> handler);
    bool hasHandler(int type) const { return handlers.count(type) != 0; }

    /// Delivers or refuses a request. An exception of the handler is logged at level 3.
    void handle(const Request& request, Delivery delivery = Delivery::NORMAL);

    /// The handler replies to the request that is being handled. A reply over `maximumFrameSize` for which there is no
    /// room is not made; the requester gets the refusal `busy`.
    void reply(const std::string& messageId, rapidjson::Document& payload);
    /// The handler sends an event.
    void eventSent() { current.outcome = RequestOutcome::CHANGED; }

private:
    /// The request that is being handled.
    struct Current {
        std::shared_ptr<Client> requester;
        int type = 0;
        std::optional<std::size_t> index;
        RequestOutcome outcome = RequestOutcome::SILENT;
        /// Of a request that asks for an answer.
        std::string_view messageId;
        /// Of a SetSettings request.
        Wire::RequestedChange change;
        /// The number of the newest event before it.
        unsigned long eventBefore = 0;
    };

    void handle(const Request& request, const std::string& clientName, CheckedSettingsHandler* answering,
                Delivery delivery);
    std::optional<std::string> checkedName(const Request& request, bool isAnswered);
    std::optional<std::string> nameFor(const Request& request) const;
    void deliver(const Request& request, const std::string& clientName);
    void seeOutcome();
    void answer(CheckedSettingsHandler& handler, const Outcome& outcome);
    bool hasWrittenValue() const;
    static std::optional<std::string> currentValue(CheckedSettingsHandler& handler, const std::string& settingDBId);
    void refuse(const Wire::Refusal& reason);
    void send(std::string frame);

    Clients& clients;
    Announcements& announcements;
    std::shared_ptr<TrafficObserver> traffic;
    std::shared_ptr<RequestContext> context;
    std::map<int, std::function<void(const std::string&)>> handlers;
    std::weak_ptr<CheckedSettingsHandler> checkedHandler;
    Current current;
};

}  // namespace SettingsHandlerKit
