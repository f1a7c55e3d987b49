#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "SettingsHandlerKit/TrafficObserver.h"

namespace SettingsHost {

/// Copies all frames to the device clients that asked for it, each in its own frame:
/// `{"trace":{"timestamp":…,"direction":"in","door":"page","client":2,"text":"…"}}`. Costs next to nothing while no
/// client watches. Those that want ends of connections are told them, too, in order:
/// `{"trace":{…,"direction":"out","door":"socket","client":3,"closed":true}}`; "out": the host closed it. One thread
/// only.
class MessageTrace : public SettingsHandlerKit::TrafficObserver {
public:
    enum class Ends { NO, YES };

    void watch(const std::shared_ptr<SettingsHandlerKit::Client>& watcher, Ends ends) { watchers[watcher] = ends; }
    void unwatch(const std::shared_ptr<SettingsHandlerKit::Client>& watcher) { watchers.erase(watcher); }

    /// The host closes the connection of a client: what is sent to it from now on never leaves.
    void clientCut(const SettingsHandlerKit::Client& client) { tellEnd(client, "out"); }

    void clientConnected(const SettingsHandlerKit::Client& client) override;
    void clientRefused(SettingsHandlerKit::Origin origin) override;
    void clientDisconnected(const SettingsHandlerKit::Client& client,
                            SettingsHandlerKit::DisconnectReason reason) override;
    void frameReceived(const SettingsHandlerKit::Client& client, const std::string& frame) override;
    void frameSent(const SettingsHandlerKit::Client* receiver, const std::string& frame) override;
    void frameRefused(const std::string& code) override;
    void requestHandled(int type, SettingsHandlerKit::RequestOutcome outcome) override;

private:
    using Watchers = std::unordered_map<std::shared_ptr<SettingsHandlerKit::Client>, Ends>;

    void send(const char* direction, const SettingsHandlerKit::Client* client, const std::string& text);
    void tellEnd(const SettingsHandlerKit::Client& client, const char* direction);

    Watchers watchers;
    /// Connected clients, numbered in the order in which they connected.
    std::unordered_map<const SettingsHandlerKit::Client*, unsigned long> numbers;
    unsigned long lastNumber = 0;
};

}  // namespace SettingsHost
