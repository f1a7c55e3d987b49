#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Broker.h"
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
    /// In seconds.
    int keepalive = 60;
    Pauses::Milliseconds firstPause{1000};
    Pauses::Milliseconds longestPause{120000};
    std::uint64_t seed = 0;
    /// Files; TLS is used when there is a CA.
    std::string ca;
    std::string certificate;
    std::string key;
    /// No user: anonymous.
    std::string user;
    std::string password;
    std::function<void(int level, const std::string& text)> log = [](int, const std::string&) {};
};

/// A connection by libmosquitto. It connects again by itself, after pauses.
class MosquittoBroker : public Broker, public SettingsBridge::Source {
public:
    explicit MosquittoBroker(MosquittoOptions chosen);
    ~MosquittoBroker() override;

    /// Connects from now on and tells `who`.
    void listen(const std::shared_ptr<BrokerListener>& who) { listener = who; }
    bool isConnected() const { return connectedSince.has_value(); }

    void subscribe(const std::vector<std::string>& topics) override;
    int publish(const Message& message) override;

    Wanted wanted() override;
    void process(short events) override;
    /// Sends what was published, as far as it can be sent at once, and takes leave of the broker.
    void disconnect();

private:
    struct Callbacks;

    void open();
    void configure();
    void close(const std::string& reason);

    const MosquittoOptions options;
    std::weak_ptr<BrokerListener> listener;
    Pauses pauses;
    std::unique_ptr<mosquitto, void (*)(mosquitto*)> connection;
    Time nextAttempt{};
    /// When libmosquitto looks after the connection: pings, missing replies.
    Time nextCare{};
    std::optional<Time> connectedSince;
    /// Why the broker refused or closed the connection; empty: it did not.
    std::string lossReason;
    std::string loggedReason;
};

}  // namespace SettingsMqtt
