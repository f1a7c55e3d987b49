#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

#include "SettingsHandlerKit/ClientListener.h"
#include "simulation/Faults.h"

namespace SettingsHost {

/// Stands between the connections of the settings and the server: frames to clients are late, or a new event cuts the
/// connection instead, while those faults are on. Events of a resume are not new. One thread only.
class ClientsWithFaults : public SettingsHandlerKit::ClientListener {
public:
    /// Calls an action later, from the event loop.
    using Later = std::function<void(std::chrono::milliseconds, std::function<void()>)>;
    /// Told when a client, as the server knows it, is cut.
    using Cut = std::function<void(const SettingsHandlerKit::Client&)>;

    ClientsWithFaults(
        std::shared_ptr<SettingsHandlerKit::ClientListener> server, std::shared_ptr<Faults> faults, Later later,
        Cut cut = [](const SettingsHandlerKit::Client&) {});
    ~ClientsWithFaults() override;

    void connected(const std::shared_ptr<SettingsHandlerKit::Client>& client) override;
    void disconnected(const std::shared_ptr<SettingsHandlerKit::Client>& client,
                      SettingsHandlerKit::DisconnectReason reason) override;
    void received(const std::shared_ptr<SettingsHandlerKit::Client>& client, const std::string& frame) override;
    void oversized(const std::shared_ptr<SettingsHandlerKit::Client>& client) override;
    void refused(SettingsHandlerKit::Origin origin) override;

private:
    class ClientWithFaults;
    struct Shared;

    /// The client as the server knows it.
    const std::shared_ptr<ClientWithFaults>& known(const std::shared_ptr<SettingsHandlerKit::Client>& client);
    void releaseAll();

    std::shared_ptr<SettingsHandlerKit::ClientListener> server;
    std::shared_ptr<Shared> shared;
    std::unordered_map<const SettingsHandlerKit::Client*, std::shared_ptr<ClientWithFaults>> clients;
};

}  // namespace SettingsHost
