#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Connections.h"
#include "bridge/Loop.h"
#include "mosquitto/Pauses.h"

struct mosquitto;

namespace SettingsMqtt {

struct MosquittoOptions {
    std::string address = "localhost";
    int port = 1883;
    /// "5" or "3.1.1".
    std::string protocol = "5";
    std::string clientId;
    Message lastWill;
    /// In seconds, as the pauses.
    int keepalive = 60;
    double firstPause = 1;
    double longestPause = 120;
    std::uint64_t seed = 0;
    /// Files; TLS is used when there is a CA.
    std::string ca;
    std::string certificate;
    std::string key;
    /// No user: anonymous.
    std::string user;
    std::string password;
    Log log = [](int, const std::string&) {};
};

/// A connection by libmosquitto. It connects again by itself, after pauses.
class MosquittoBroker : public Broker, public SettingsBridge::Source {
public:
    explicit MosquittoBroker(MosquittoOptions chosen);
    ~MosquittoBroker() override;

    /// Connects from now on and tells `who`, which must live as long as this is processed.
    void listen(BrokerListener& who) { listener = &who; }
    bool isConnected() const { return connectedSince.has_value(); }

    void subscribe(const std::vector<std::string>& topics) override;
    int publish(const Message& message) override;

    Wanted wanted() override;
    void process(short events) override;
    /// Takes leave of the broker when it has acknowledged what was published, after two seconds at the latest: a broker
    /// that cannot acknowledge any more takes the connection for lost and publishes the last will.
    void disconnect();

private:
    void open();
    void configure();
    void watch();
    void accepted(int code);
    void close(const std::string& reason);

    const MosquittoOptions options;
    const bool isVersion5;
    BrokerListener* listener = nullptr;
    Pauses pauses;
    std::unique_ptr<mosquitto, void (*)(mosquitto*)> connection;
    /// Of the next attempt to connect; with a connection, when libmosquitto looks after it: pings, missing replies.
    Time due{};
    std::optional<Time> connectedSince;
    int unacknowledged = 0;
    /// Why the broker refused or closed the connection; empty: it did not.
    std::string lossReason;
    std::string loggedReason;
};

}  // namespace SettingsMqtt
