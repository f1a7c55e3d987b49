#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Broker.h"
#include "Host.h"
#include "Outbox.h"
#include "Payloads.h"
#include "SettingsClient/Notification.h"
#include "Topics.h"
#include "Versions.h"

namespace SettingsMqtt {

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
class Bridge : public BrokerListener {
public:
    Bridge(BridgeOptions chosen, std::shared_ptr<Broker> brokerConnection, std::shared_ptr<Host> hostConnection,
           std::shared_ptr<VersionStore> versionStore);

    /// What the broker publishes when it loses the bridge.
    static Message lastWill(const std::string& id);

    /// @name From the host
    /// @{

    /// Reads everything anew. Errors: those of `Host`; then it is called again when the host is there again.
    void hostConnected();
    void hostLost();
    void changed(const SettingsClient::Event& event);
    /// Empty: all settings.
    void reread(const std::vector<std::string>& keys);
    /// @}

    void brokerConnected() override;
    void brokerLost() override;
    void received(const Message& message) override;
    void acknowledged(int number) override;

    /// What is to be stored, at once or later; see `Versions`.
    Versions::Unsaved unsaved() const { return versions.unsaved(); }
    void save() { versions.save(); }
    /// Says that the device goes; the caller then closes the connection.
    void stop();

private:
    using Answer = SettingsClient::Answer;
    using Setting = SettingsClient::Setting;

    struct Desired {
        Command command;
        bool retained = false;
    };
    struct Answered {
        Message message;
        std::string outcome;
    };

    bool isOffered(const Setting& setting) const;
    void readCatalogue();
    void take(const std::string& key, const std::optional<std::string>& value, bool byBridge);
    std::string stateOf(const Setting& setting) const;
    Message stateMessage(const Setting& setting) const;
    Message availability() const;

    std::optional<Answer> refusalOf(const std::string& key) const;
    void receivedSet(const std::string& key, const Message& message);
    void receivedDesired(const std::string& key, const Message& message);
    void applyDesired(const std::string& key, const Desired& desired);
    Answer setAtHost(const std::string& key, const std::string& value);
    std::string publishOutcome(const std::string& key, const Command& command, const Answer& answer);

    const BridgeOptions options;
    const Topics topics;
    const std::shared_ptr<Broker> broker;
    const std::shared_ptr<Host> host;
    Outbox outbox;
    Versions versions;

    /// All settings of the host by key; the values of those that are offered.
    std::map<std::string, Setting> settings;
    std::map<std::string, std::optional<std::string>> values;
    bool isHostThere = false;
    bool wasConnected = false;
    /// What waits for the host.
    std::map<std::string, Desired> waiting;
    /// The last commands with an id, to answer a second time without carrying them out again.
    std::deque<Answered> answered;
};

}  // namespace SettingsMqtt
