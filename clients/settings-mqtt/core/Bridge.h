#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Payloads.h"
#include "SettingsClient/Answer.h"
#include "SettingsClient/Setting.h"
#include "Topics.h"
#include "Versions.h"
#include "mqtt/Outbox.h"

namespace SettingsMqtt {

/// The connection to a host. Operations and errors are those of `SettingsClient::Client`.
class Host {
public:
    virtual ~Host() = default;
    virtual std::vector<SettingsClient::Setting> catalogue() = 0;
    virtual std::map<std::string, std::string> get(const std::vector<std::string>& keys) = 0;
    virtual SettingsClient::Answer set(const SettingsClient::Assignment& wanted) = 0;
};

struct BridgeOptions {
    /// The name of this device in topics.
    std::string id;
    std::vector<std::string> groups;
    /// Settings of privacy class "personal" that are offered all the same.
    std::set<std::string> included;
    bool homeAssistant = false;
    /// The name that events of changes by the bridge carry.
    std::string client = "settings-mqtt";
    /// Of the program, for discovery.
    std::string version;
    /// Levels as everywhere: 0 traces to 3 errors.
    std::function<void(int level, const std::string& text)> log = [](int, const std::string&) {};
};

/// Between one host and one broker: publishes values and changes, carries commands out. docs/mqtt.md has topics and
/// payloads. It has no thread, no clock, no descriptor; a process can have thousands.
///
/// Order: `hostConnected` comes first; the broker is connected afterwards.
class Bridge : public Mqtt::BrokerListener {
public:
    Bridge(BridgeOptions chosen, std::shared_ptr<Mqtt::Broker> brokerConnection, std::shared_ptr<Host> hostConnection,
           std::shared_ptr<Versions> ofDesiredValues);

    /// @name From the host
    /// @{

    /// Reads everything anew. Errors of this and `reread`: those of `Host`; then this is called again, after a pause or
    /// with the next connection.
    void hostConnected();
    /// Also when this program ends: then the caller closes the connection to the broker afterwards.
    void hostLost();
    void changed(const SettingsClient::Event& event) { take(event.key, event.to, &event); }
    /// Empty: all settings.
    void reread(const std::vector<std::string>& keys);
    /// @}

    void brokerConnected() override;
    void brokerLost() override;
    void received(const Message& message) override;
    void acknowledged(int number) override;

private:
    using Answer = SettingsClient::Answer;
    using Setting = SettingsClient::Setting;

    bool isOffered(const Setting& setting) const;
    /// Errors: `SettingsClient::RequestRefused`.
    void requireOffered(const std::string& key) const;
    /// Does nothing unless the setting is offered. `event`: which told the value, if one did.
    void take(const std::string& key, const std::optional<std::string>& value, const SettingsClient::Event* event);
    Message stateOf(const Setting& setting) const;

    void receivedSet(const Command& command, const Message& message);
    void applyDesired(const Command& command);
    Answer setAtHost(const Command& command);
    std::string publishOutcome(const Command& command, const Answer& answer);

    const BridgeOptions options;
    const Topics topics;
    const std::shared_ptr<Mqtt::Broker> broker;
    const std::shared_ptr<Host> host;
    Mqtt::Outbox outbox;
    const std::shared_ptr<Versions> versions;

    /// All settings of the host by key; the values of those that are offered.
    std::map<std::string, Setting> settings;
    std::map<std::string, std::optional<std::string>> values;
    bool isHostThere = false;
    bool wasConnected = false;
    /// Desired values that wait for the host, by key.
    std::map<std::string, Command> waiting;
    /// Topic and payload of the last commands with an id, and their outcomes, to answer them a second time without
    /// carrying them out again.
    std::deque<std::pair<std::string, std::string>> answered;
};

}  // namespace SettingsMqtt
