#include "server/protocol/Clients.h"

#include <utility>

#include "Wire/Frames.h"
#include "Wire/RefusalCode.h"

namespace SettingsHandlerKit {

Clients::Clients(std::shared_ptr<TrafficObserver> trafficObserver, std::shared_ptr<const Backlog> backlogOfClients)
    : traffic(std::move(trafficObserver)), backlog(std::move(backlogOfClients)) {}

std::string Clients::nameOf(const std::shared_ptr<Client>& client) const {
    const auto found = names.find(client);
    return found == names.end() ? "" : found->second;
}

void Clients::sendToAll(const Frame& frame) {
    for (const auto& entry : names) {
        entry.first->send(frame);
    }
    traffic->frameSent(nullptr, *frame);
}

void Clients::sendTo(const std::shared_ptr<Client>& client, const Frame& frame) {
    client->send(frame);
    traffic->frameSent(client.get(), *frame);
}

void Clients::refuse(const std::shared_ptr<Client>& client, const Wire::Refusal& reason) {
    sendTo(client, std::make_shared<const std::string>(Wire::refusalFrame(reason.code, reason.message)));
    traffic->frameRefused(reason.code);
}

Wire::Refusal Clients::tooMuchQueued() {
    return {Wire::RefusalCode::busy,
            "too much data is queued for clients that do not read; try again later or request fewer settings"};
}

}  // namespace SettingsHandlerKit
