#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "Bridge.h"
#include "fleet/SimulatedHost.h"
#include "mqtt/Connection.h"

namespace Benchmarks {

/// Knows whether the broker has everything.
class CountedBroker : public Mqtt::Broker, public Mqtt::BrokerListener {
public:
    explicit CountedBroker(std::shared_ptr<Mqtt::Connection> itsConnection) : connection(std::move(itsConnection)) {}

    void setListener(Mqtt::BrokerListener* who) { listener = who; }
    /// Connections until now.
    int connections() const { return connected; }
    bool hasEverything() const { return isConnected && published > 0 && published == taken; }

    void subscribe(const std::vector<std::string>& topics) override { connection->subscribe(topics); }
    std::optional<int> publish(const Mqtt::Message& message) override;
    void brokerConnected() override;
    void brokerLost() override;
    void received(const Mqtt::Message& message) override { listener->received(message); }
    void acknowledged(int number) override;

private:
    const std::shared_ptr<Mqtt::Connection> connection;
    Mqtt::BrokerListener* listener = nullptr;
    bool isConnected = false;
    int connected = 0;
    /// On this connection.
    int published = 0;
    int taken = 0;
};

struct TelevisionOptions {
    int port = 0;
    /// In seconds.
    int keepalive = 60;
    std::chrono::milliseconds firstPause{1000};
};

/// The real bridge between a simulated host and a real broker.
class Television {
public:
    Television(std::size_t number, const TelevisionOptions& options);

    /// To be watched and processed by a loop.
    Mqtt::Connection& connection() { return *mosquitto; }
    /// Publishes what happened at its host.
    void tellBridge();
    void change();
    /// Has the broker got everything on a connection later than that number?
    bool hasPublished(int connectionsBefore) const {
        return counted->connections() > connectionsBefore && counted->hasEverything();
    }
    int connections() const { return counted->connections(); }

private:
    std::shared_ptr<SimulatedHost> host = std::make_shared<SimulatedHost>();
    std::shared_ptr<Mqtt::Connection> mosquitto;
    std::shared_ptr<CountedBroker> counted;
    SettingsMqtt::Bridge bridge;
};

}  // namespace Benchmarks
