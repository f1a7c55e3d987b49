#include "server/protocol/Clients.h"

#include <utility>

#include "Wire/Frames.h"
#include "Wire/RefusalCode.h"
#include "server/sockets/ListenerLimits.h"

namespace SettingsHandlerKit {

Clients::Clients(std::shared_ptr<TrafficObserver> trafficObserver, std::shared_ptr<const Backlog> backlogOfClients)
    : traffic(std::move(trafficObserver)), backlog(std::move(backlogOfClients)) {}

std::string Clients::nameOf(const std::shared_ptr<Client>& client) const {
    const auto found = names.find(client);
    return found == names.end() ? "" : found->second;
}

void Clients::sendToAll(const SharedFrame& frame) {
    send({nullptr, frame, ""});
}

void Clients::sendTo(const std::shared_ptr<Client>& client, const SharedFrame& frame) {
    send({client, frame, ""});
}

void Clients::refuse(const std::shared_ptr<Client>& client, const Wire::Refusal& reason,
                     std::optional<std::size_t> index) {
    std::string frame = Wire::refusalFrame(reason.code, reason.message, index);
    send({client, std::make_shared<const std::string>(std::move(frame)), reason.code});
}

void Clients::send(const Held& message) {
    if (held) {
        heldBytes += message.frame->size();
        held->push_back(message);
        return;
    }
    if (message.receiver) {
        message.receiver->send(message.frame);
    } else {
        for (const auto& entry : names) {
            entry.first->send(message.frame);
        }
    }
    traffic->frameSent(message.receiver.get(), *message.frame);
    if (!message.code.empty()) {
        traffic->frameRefused(message.code);
    }
}

bool Clients::hasRoomFor(std::size_t bytes) const {
    const std::size_t all = heldBytes + bytes;
    return all <= Wire::maximumFrameSize || (backlog->hasRoomFor(all) && (!held || all <= maximumWaiting));
}

Wire::Refusal Clients::tooMuchQueued() {
    return {Wire::RefusalCode::busy,
            "too much data is queued for clients that do not read; try again later or request fewer settings"};
}

void Clients::hold() {
    held.emplace();
}

void Clients::sendHeld() {
    const auto messages = std::exchange(held, std::nullopt);
    heldBytes = 0;
    for (const auto& message : *messages) {
        send(message);
    }
}

void Clients::dropHeld() {
    held->clear();
    heldBytes = 0;
}

}  // namespace SettingsHandlerKit
