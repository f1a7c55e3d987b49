#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace SettingsMqtt {

/// May a device or group have this name in topics: 1 to 64 of A-Z, a-z, 0-9, ".", "_" and "-"?
bool isTopicName(std::string_view name);

/// The topics of one device, all below "settings/".
class Topics {
public:
    Topics(const std::string& id, const std::vector<std::string>& groups);

    std::string state(const std::string& key) const { return own + "state/" + key; }
    std::string set(const std::string& key) const { return own + "set/" + key; }
    std::string outcome() const { return own + "outcome"; }
    std::string event() const { return own + "event"; }
    std::string availability() const { return own + "availability"; }

    /// With which to subscribe to all commands.
    std::vector<std::string> subscriptions() const;

    struct Target {
        enum class Kind { SET, DESIRED };
        Kind kind;
        /// Whatever is there; it may be none of the catalogue.
        std::string key;
    };
    /// Nothing for a topic that is not subscribed.
    std::optional<Target> targetOf(const std::string& topic) const;

private:
    std::string own;
    std::vector<std::pair<std::string, Target::Kind>> commands;
};

}  // namespace SettingsMqtt
