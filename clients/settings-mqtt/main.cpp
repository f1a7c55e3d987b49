#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "Options.h"
#include "SettingsClient/Client.h"
#include "VersionFile.h"
#include "bridge/Log.h"
#include "bridge/Loop.h"
#include "bridge/StatusFile.h"

namespace SettingsMqtt {

namespace {

using SettingsClient::Client;

class ClientHost : public Host {
public:
    explicit ClientHost(Client& settingsClient) : client(settingsClient) {}

    std::vector<SettingsClient::Setting> catalogue() override { return client.catalogue(); }
    std::map<std::string, std::string> get(const std::vector<std::string>& keys) override { return client.get(keys); }
    SettingsClient::Answer set(const std::string& key, const std::string& value,
                               std::optional<std::int64_t> timestamp) override {
        return client.set(key, value, timestamp);
    }

private:
    Client& client;
};

class BrokerSource : public SettingsBridge::Source {
public:
    explicit BrokerSource(Mqtt::Connection& brokerConnection) : connection(brokerConnection) {}

    Wanted wanted() override {
        const auto wanted = connection.wanted();
        return {wanted.descriptor, wanted.events, wanted.time};
    }
    void process(short events) override { connection.process(events); }

private:
    Mqtt::Connection& connection;
};

/// Each time takes two flushes of the disk.
constexpr std::chrono::seconds savingPause{10};

/// What is done before each wait.
class Upkeep : public SettingsBridge::Source {
public:
    Upkeep(Versions& ofDesiredValues, const VersionFile& theirFile, const Client& host,
           const Mqtt::Connection& connection)
        : versions(ofDesiredValues), file(theirFile), client(host), broker(connection) {}

    Wanted wanted() override {
        const auto unsaved = versions.unsaved();
        if (unsaved == Versions::Unsaved::VERSIONS) {
            process(0);
        } else if (unsaved == Versions::Unsaved::VALUES && !saving) {
            saving = std::chrono::steady_clock::now() + savingPause;
        }
        const std::string state = !client.isConnected()   ? "waiting for the host"
                                  : !broker.isConnected() ? "waiting for the broker"
                                                          : "connected to host and broker";
        status.write(client.isConnected() && broker.isConnected(), state);
        return {-1, 0, saving};
    }
    void process(short /*events*/) override {
        saving.reset();
        if (versions.unsaved() != Versions::Unsaved::NOTHING) {
            file.store(versions.save());
        }
    }

private:
    Versions& versions;
    const VersionFile& file;
    const Client& client;
    const Mqtt::Connection& broker;
    std::optional<Time> saving;
    SettingsBridge::StatusFile status{"settings-mqtt", SETTINGS_HANDLER_VERSION};
};

void observe(Client& client, Bridge& bridge, Mqtt::Connection& broker, const SettingsBridge::Log& log) {
    client.onEvent([&](const auto& event) { bridge.changed(event); });
    client.onReread([&](const auto& reread) { bridge.reread(reread.keys); });
    client.onConnected([&] {
        bridge.hostConnected();
        broker.listen(bridge);
        log(1, "connected to the host");
    });
    client.onDisconnected([&](const std::string& reason) {
        bridge.hostLost();
        log(2, "cannot reach the host: " + reason);
    });
}

void run(Options options) {
    const SettingsBridge::Log log(options.common.logLevel);
    options.bridge.log = options.broker.log = log;
    const VersionFile file(options.stateFolder, log);
    const auto versions = std::make_shared<Versions>(file.load());
    Client client({options.bridge.client, SettingsBridge::socketsOf(options.common)});
    const auto broker = std::make_shared<Mqtt::Connection>(options.broker);
    Bridge bridge(options.bridge, broker, std::make_shared<ClientHost>(client), versions);
    observe(client, bridge, *broker, log);
    SettingsBridge::HostSource host(client);
    BrokerSource brokerSource(*broker);
    Upkeep upkeep(*versions, file, client, *broker);
    SettingsBridge::Loop loop;
    loop.add(upkeep);
    loop.add(host);
    loop.add(brokerSource);
    log(1, "this device is settings/" + options.bridge.id);
    loop.run("waiting for the host");
    bridge.hostLost();
    broker->disconnect();
    upkeep.process(0);
}

}  // namespace

}  // namespace SettingsMqtt

int main(int argumentCount, char** arguments) {
    return SettingsBridge::runProgram("settings-mqtt",
                                      [&] { SettingsMqtt::run(SettingsMqtt::parseOptions(argumentCount, arguments)); });
}
