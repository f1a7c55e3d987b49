#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mqtt/Broker.h"

namespace SettingsMqtt {

using Mqtt::Message;

/// May a device or group have this name in topics: 1 to 64 of A-Z, a-z, 0-9, ".", "_" and "-"?
bool isTopicName(std::string_view name);

/// What a message asks for.
struct Command {
    /// Whatever is there; it may be none of the catalogue.
    std::string key;
    /// Otherwise it is a set.
    bool isDesired = false;
    bool retained = false;
    /// The whole payload, until it is read.
    std::string value;
    /// Comes back in the outcome; empty: none.
    std::string id;
    /// Of a desired value; 0: none.
    std::int64_t version = 0;
};

/// The topics of one device, all below "settings/".
class Topics {
public:
    explicit Topics(std::string id, const std::vector<std::string>& groups = {});

    std::string state(const std::string& key) const { return own + "state/" + key; }
    std::string set(const std::string& key) const { return own + "set/" + key; }
    std::string outcome() const { return own + "outcome"; }
    std::string event() const { return own + "event"; }
    Message availability(bool isOnline) const { return {own + "availability", isOnline ? "online" : "offline", true}; }

    /// With which to subscribe to all commands.
    std::vector<std::string> subscriptions() const;
    /// The payload is not read yet. Nothing for a topic that is not subscribed.
    std::optional<Command> commandOf(const Message& message) const;

    /// The name of the device.
    const std::string id;

private:
    const std::string own;
    /// The beginnings of the topics of commands, and whether desired values follow.
    std::vector<std::pair<std::string, bool>> commands;
};

}  // namespace SettingsMqtt
