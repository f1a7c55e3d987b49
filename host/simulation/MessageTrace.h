#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "SettingsHandlerKit/TrafficObserver.h"

namespace SettingsHost {

/// Copies all frames to the device clients that asked for it, each in its own frame:
/// `{"trace":{"timestamp":…,"direction":"in","door":"page","client":2,"text":"…"}}`. Costs next to nothing while no
/// client watches. One thread only.
class MessageTrace : public SettingsHandlerKit::TrafficObserver {
public:
    void watch(const std::shared_ptr<SettingsHandlerKit::Client>& watcher) { watchers.insert(watcher); }
    void unwatch(const std::shared_ptr<SettingsHandlerKit::Client>& watcher) { watchers.erase(watcher); }

    void clientConnected(const SettingsHandlerKit::Client& client) override;
    void clientRefused(SettingsHandlerKit::Origin origin) override;
    void clientDisconnected(const SettingsHandlerKit::Client& client,
                            SettingsHandlerKit::DisconnectReason reason) override;
    void frameReceived(const SettingsHandlerKit::Client& client, const std::string& frame) override;
    void frameSent(const SettingsHandlerKit::Client* receiver, const std::string& frame) override;
    void frameRefused(const std::string& code) override;
    void requestHandled(int type, SettingsHandlerKit::RequestOutcome outcome) override;

private:
    void send(const char* direction, const SettingsHandlerKit::Client* client, const std::string& text);

    std::unordered_set<std::shared_ptr<SettingsHandlerKit::Client>> watchers;
    /// Connected clients, numbered in the order in which they connected.
    std::unordered_map<const SettingsHandlerKit::Client*, unsigned long> numbers;
    unsigned long lastNumber = 0;
};

}  // namespace SettingsHost
