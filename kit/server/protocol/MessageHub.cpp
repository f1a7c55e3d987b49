#include "server/protocol/MessageHub.h"

#include <utility>

#include "Wire/FrameInspector.h"
#include "server/Hexadecimal.h"

namespace SettingsHandlerKit {

namespace {

/// Of the name of a run.
constexpr std::size_t runBytes = 16;

}  // namespace

MessageHub::MessageHub(std::shared_ptr<TrafficObserver> trafficObserver, std::shared_ptr<RequestContext> requestContext,
                       std::shared_ptr<const Backlog> backlogOfClients, const Environment& environment)
    : traffic(std::move(trafficObserver)),
      clients(traffic, std::move(backlogOfClients)),
      announcements(clients, history, environment),
      requests(clients, announcements, traffic, std::move(requestContext)),
      queries(clients, history, hexadecimal(environment.random(runBytes))) {}

void MessageHub::connected(const std::shared_ptr<Client>& client) {
    clients.add(client);
    traffic->clientConnected(*client);
}

void MessageHub::disconnected(const std::shared_ptr<Client>& client, DisconnectReason reason) {
    clients.remove(client);
    traffic->clientDisconnected(*client, reason);
}

void MessageHub::oversized(const std::shared_ptr<Client>& client) {
    clients.refuse(client, Wire::tooLarge());
}

void MessageHub::refused(Origin origin) {
    traffic->clientRefused(origin);
}

void MessageHub::received(const std::shared_ptr<Client>& client, const std::string& frame) {
    announcements.holdObservers();
    handle(client, frame);
    announcements.callObservers();
}

void MessageHub::handle(const std::shared_ptr<Client>& client, const std::string& frame) {
    traffic->frameReceived(*client, frame);
    rapidjson::Document members;
    if (const auto reason = Wire::inspectFrame(frame, members)) {
        clients.refuse(client, *reason);
        return;
    }
    if (!members.HasMember("type")) {
        const auto batch = members.FindMember("batch");
        if (batch != members.MemberEnd()) {
            batches.handle(client, batch->value);
            return;
        }
        if (queries.handles(members)) {
            queries.handle(client, members);
            return;
        }
    }
    requests.handle({client, members, frame, std::nullopt});
}

void MessageHub::perform(Origin origin, const std::function<void()>& action) {
    announcements.perform({origin, ""}, action);
}

void MessageHub::valueChanged(const std::string& settingDBId) {
    announcements.valueChanged(settingDBId);
}

std::string MessageHub::sendMessage(int messageType, rapidjson::Document& payload) {
    requests.eventSent();
    return announcements.sendEvent(messageType, payload);
}

void MessageHub::sendResponse(const std::string& messageId, rapidjson::Document& payload) {
    requests.reply(messageId, payload);
}

void MessageHub::registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) {
    requests.registerHandler(messageType, std::move(handler));
}

}  // namespace SettingsHandlerKit
