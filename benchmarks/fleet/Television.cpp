#include "fleet/Television.h"

#include <chrono>
#include <utility>

#include "fleet/Names.h"

namespace Benchmarks {

namespace {

Mqtt::ConnectionOptions connectionOptions(std::size_t number, const TelevisionOptions& chosen) {
    Mqtt::ConnectionOptions options;
    options.address = "127.0.0.1";
    options.port = chosen.port;
    options.clientId = "settings-" + televisionName(number);
    options.lastWill = SettingsMqtt::Topics(televisionName(number)).availability(false);
    options.keepalive = chosen.keepalive;
    options.firstPause = std::chrono::duration<double>(chosen.firstPause).count();
    options.seed = number;
    return options;
}

SettingsMqtt::BridgeOptions bridgeOptions(std::size_t number) {
    SettingsMqtt::BridgeOptions options;
    options.id = televisionName(number);
    options.groups = {groupName};
    options.version = "1";
    return options;
}

}  // namespace

std::optional<int> CountedBroker::publish(const Mqtt::Message& message) {
    ++published;
    return connection->publish(message);
}

void CountedBroker::brokerConnected() {
    ++connected;
    isConnected = true;
    published = 0;
    taken = 0;
    listener->brokerConnected();
}

void CountedBroker::brokerLost() {
    isConnected = false;
    listener->brokerLost();
}

void CountedBroker::acknowledged(int number) {
    ++taken;
    listener->acknowledged(number);
}

Television::Television(std::size_t number, const TelevisionOptions& options)
    : mosquitto(std::make_shared<Mqtt::Connection>(connectionOptions(number, options))),
      counted(std::make_shared<CountedBroker>(mosquitto)),
      bridge(bridgeOptions(number), counted, host, std::make_shared<SettingsMqtt::Versions>()) {
    counted->setListener(&bridge);
    bridge.hostConnected();
    mosquitto->listen(*counted);
}

void Television::tellBridge() {
    for (const auto& event : host->takeEvents()) {
        bridge.changed(event);
    }
}

void Television::change() {
    host->change(changedKey, std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    tellBridge();
}

}  // namespace Benchmarks
