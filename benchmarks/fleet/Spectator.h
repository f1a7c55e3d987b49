#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "mqtt/Connection.h"

namespace Benchmarks {

/// The operator: subscribes and commands.
class Spectator {
public:
    using Clock = std::chrono::steady_clock;

    /// Returns when it is connected and the broker has the subscriptions.
    Spectator(int port, std::vector<std::string> topics);

    void publish(const Mqtt::Message& message) { connection->publish(message); }
    /// Passes messages to `take` until it returns true. Errors: `std::runtime_error` after `deadline`.
    void receive(const std::function<bool(const Mqtt::Message&)>& take,
                 std::chrono::seconds deadline = std::chrono::seconds(120));

private:
    class Listener;

    /// Waits for the connection.
    void turn(Clock::time_point until);

    const std::shared_ptr<Mqtt::Connection> connection;
    const std::shared_ptr<Listener> listener;
};

}  // namespace Benchmarks
