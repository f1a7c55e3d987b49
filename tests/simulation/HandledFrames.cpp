#include "simulation/HandledFrames.h"

namespace SettingsSimulation {

using SettingsHandlerKit::Client;

void HandledFrames::connected(const std::shared_ptr<Client>& client) {
    connections[client.get()] = report.connection();
    next->connected(client);
}

void HandledFrames::disconnected(const std::shared_ptr<Client>& client, SettingsHandlerKit::DisconnectReason reason) {
    connections.erase(client.get());
    next->disconnected(client, reason);
}

void HandledFrames::received(const std::shared_ptr<Client>& client, const std::string& frame) {
    report.handle(connections.at(client.get()), frame, [&] { next->received(client, frame); });
}

void HandledFrames::oversized(const std::shared_ptr<Client>& client) {
    report.handle(connections.at(client.get()), std::nullopt, [&] { next->oversized(client); });
}

}  // namespace SettingsSimulation
