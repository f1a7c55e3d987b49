#include <functional>
#include <memory>
#include <string>

#include "Options.h"
#include "SettingsClient/Client.h"
#include "VersionFile.h"
#include "bridge/HostSource.h"
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
    SettingsClient::Answer set(const SettingsClient::Assignment& wanted) override {
        return client.set(wanted.key, wanted.value, wanted.timestamp);
    }

private:
    Client& client;
};

/// The connection to the broker; before each wait it says how the program is.
class BrokerSource : public SettingsBridge::Source {
public:
    BrokerSource(Mqtt::Connection& brokerConnection, const Client& hostConnection)
        : broker(brokerConnection), host(hostConnection) {}

    Wanted wanted() override {
        const std::string state = !host.isConnected()     ? "waiting for the host"
                                  : !broker.isConnected() ? "waiting for the broker"
                                                          : "connected to host and broker";
        status.write(host.isConnected() && broker.isConnected(), state);
        const auto wanted = broker.wanted();
        return {wanted.descriptor, wanted.events, wanted.time};
    }
    void process(short events) override { broker.process(events); }

private:
    Mqtt::Connection& broker;
    const Client& host;
    SettingsBridge::StatusFile status{"settings-mqtt", SETTINGS_HANDLER_VERSION};
};

void observe(Client& client, Bridge& bridge, const std::function<void()>& readAll, const SettingsBridge::Log& log) {
    client.onEvent([&](const auto& event) { bridge.changed(event); });
    client.onReread([&](const auto& reread) { bridge.reread(reread.keys); });
    client.onConnected([&] {
        log(1, "connected to the host");
        readAll();
    });
    client.onDisconnected([&](const std::string& reason) {
        bridge.hostLost();
        log(2, reason);
    });
}

void run(Options options) {
    const SettingsBridge::Log log(options.common.logLevel);
    options.bridge.log = options.broker.log = log;
    VersionFile versions(options.stateFolder, log);
    Client client({options.bridge.client, SettingsBridge::socketsOf(options.common)});
    const auto broker = std::make_shared<Mqtt::Connection>(options.broker);
    Bridge bridge(options.bridge, broker, std::make_shared<ClientHost>(client), versions.versions());
    const std::function<void()> readAll = [&] {
        bridge.hostConnected();
        broker->listen(bridge);
    };
    observe(client, bridge, readAll, log);
    SettingsBridge::HostSource hostSource(client, log, readAll);
    BrokerSource brokerSource(*broker, client);
    SettingsBridge::Loop loop;
    loop.add(versions);
    loop.add(hostSource);
    loop.add(brokerSource);
    log(1, "topics of this device: settings/" + options.bridge.id + "/#");
    loop.run("waiting for the host");
    bridge.hostLost();
    broker->disconnect();
    versions.process(0);
}

}  // namespace

}  // namespace SettingsMqtt

int main(int argumentCount, char** arguments) {
    return SettingsBridge::runProgram("settings-mqtt",
                                      [&] { SettingsMqtt::run(SettingsMqtt::parseOptions(argumentCount, arguments)); });
}
