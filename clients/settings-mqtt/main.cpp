#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Bridge.h"
#include "Options.h"
#include "SettingsClient/Client.h"
#include "VersionFile.h"
#include "bridge/Log.h"
#include "bridge/Loop.h"
#include "bridge/StatusFile.h"
#include "mosquitto/MosquittoBroker.h"

namespace SettingsMqtt {

namespace {

class ClientHost : public Host {
public:
    explicit ClientHost(SettingsClient::Client& settingsClient) : client(settingsClient) {}

    std::vector<SettingsClient::Setting> catalogue() override { return client.catalogue(); }
    std::map<std::string, std::string> get(const std::vector<std::string>& keys) override { return client.get(keys); }
    SettingsClient::Answer set(const std::string& key, const std::string& value,
                               std::optional<std::int64_t> timestamp) override {
        return client.set(key, value, timestamp);
    }

private:
    SettingsClient::Client& client;
};

/// Each time takes two flushes of the disk.
constexpr std::chrono::seconds savingPause{10};

/// What is done before each wait.
class Upkeep : public SettingsBridge::Source {
public:
    Upkeep(Bridge& served, const SettingsClient::Client& host, const MosquittoBroker& connection,
           const std::string& version)
        : bridge(served), client(host), broker(connection), status("settings-mqtt", version) {}

    Wanted wanted() override {
        const auto unsaved = bridge.unsaved();
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
        bridge.save();
        saving.reset();
    }

private:
    Bridge& bridge;
    const SettingsClient::Client& client;
    const MosquittoBroker& broker;
    std::optional<Time> saving;
    SettingsBridge::StatusFile status;
};

/// The client connects again by itself and then calls `onConnected`; other errors than a lost connection end the
/// program.
template <typename Action>
void unlessLost(const Action& action) {
    try {
        action();
    } catch (const SettingsClient::ConnectionError&) {
        // `onDisconnected` is told.
    }
}

void observe(SettingsClient::Client& client, const std::shared_ptr<Bridge>& bridge, MosquittoBroker& broker,
             const SettingsBridge::Log& log) {
    client.onEvent([&](const SettingsClient::Event& event) { bridge->changed(event); });
    client.onReread([&](const SettingsClient::Reread& reread) { unlessLost([&] { bridge->reread(reread.keys); }); });
    client.onConnected([&] {
        unlessLost([&] {
            bridge->hostConnected();
            broker.listen(bridge);
            log.write(SettingsBridge::LogLevel::INFORMATION, "connected to the host");
        });
    });
    client.onDisconnected([&](const std::string& reason) {
        bridge->hostLost();
        log.write(SettingsBridge::LogLevel::WARNING, "cannot reach the host: " + reason);
    });
}

void run(Options options) {
    const SettingsBridge::Log log(options.common.logLevel);
    const auto write = [&log](int level, const std::string& text) {
        log.write(static_cast<SettingsBridge::LogLevel>(level), text);
    };
    options.bridge.log = write;
    options.broker.log = write;
    SettingsClient::Client client({options.bridge.client, SettingsBridge::socketsOf(options.common)});
    const auto broker = std::make_shared<MosquittoBroker>(options.broker);
    const auto bridge = std::make_shared<Bridge>(options.bridge, broker, std::make_shared<ClientHost>(client),
                                                 std::make_shared<VersionFile>(options.stateFolder, write));
    observe(client, bridge, *broker, log);
    SettingsBridge::HostSource host(client);
    Upkeep upkeep(*bridge, client, *broker, options.bridge.version);
    SettingsBridge::Loop loop;
    loop.add(upkeep);
    loop.add(host);
    loop.add(*broker);
    log.write(SettingsBridge::LogLevel::INFORMATION, "this device is settings/" + options.bridge.id);
    loop.run("waiting for the host");
    bridge->stop();
    broker->disconnect();
    bridge->save();
}

}  // namespace

}  // namespace SettingsMqtt

int main(int argumentCount, char** arguments) {
    return SettingsBridge::runProgram("settings-mqtt",
                                      [&] { SettingsMqtt::run(SettingsMqtt::parseOptions(argumentCount, arguments)); });
}
