#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "mqtt/Broker.h"
#include "mqtt/Pauses.h"

struct mosquitto;

namespace Mqtt {

struct ConnectionOptions {
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
    /// Of the pauses; another one for each device.
    std::uint64_t seed = 0;
    /// Files, which are read anew for each connection; TLS is used when there is a CA.
    std::string ca;
    std::string certificate;
    std::string key;
    /// A file as `readCredentials` wants it; empty: anonymous.
    std::string credentials;
    /// Levels as everywhere: 0 traces to 3 errors.
    std::function<void(int level, const std::string& text)> log = [](int, const std::string&) {};
};

/// A connection to a broker by libmosquitto, which reconnects automatically after `Pauses`, for the loop of its owner:
/// before each wait this asks what is `wanted`, afterwards it calls `process`. It has no thread.
class Connection : public Broker {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Errors: `std::runtime_error` for credentials that cannot be used now.
    explicit Connection(ConnectionOptions chosen);
    ~Connection() override;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Connects from now on and tells `who`, which must live as long as this is processed.
    void listen(BrokerListener& who) { listener = &who; }
    bool isConnected() const { return connectedSince.has_value(); }

    void subscribe(const std::vector<std::string>& topics) override;
    std::optional<int> publish(const Message& message) override;

    /// What to wait for.
    struct Wanted {
        /// -1: none.
        int descriptor = -1;
        /// As in poll(2).
        short events = 0;
        /// When to call `process` in any case; a past time: at once.
        std::optional<Time> time;
    };
    Wanted wanted() const;
    /// `events` of the descriptor, as poll(2) returns them; 0: the time has come. Errors: those of the listener.
    void process(short events);

    /// Takes leave of the broker when it has acknowledged what was published, after two seconds at the latest: a broker
    /// that cannot acknowledge any more takes the connection for lost and publishes the last will.
    void disconnect();

private:
    void open();
    void configure();
    void watch();
    void accepted(int code);
    void close(const std::string& reason);

    const ConnectionOptions options;
    const bool isVersion5;
    BrokerListener* listener = nullptr;
    Pauses pauses;
    std::unique_ptr<mosquitto, void (*)(mosquitto*)> instance;
    /// Of the next attempt to connect; with an instance, when libmosquitto looks after it: pings, missing replies.
    Time due{};
    std::optional<Time> connectedSince;
    int unacknowledged = 0;
    /// Why the broker refused or closed the connection; empty: it did not.
    std::string lossReason;
    std::string loggedReason;
};

}  // namespace Mqtt
