#include "fleet/Spectator.h"

#include <algorithm>
#include <deque>
#include <stdexcept>
#include <utility>

#include <poll.h>

namespace Benchmarks {

namespace {

constexpr const char* ownTopic = "spectator";

std::shared_ptr<Mqtt::Connection> connectionTo(int port) {
    Mqtt::ConnectionOptions options;
    options.address = "127.0.0.1";
    options.port = port;
    options.clientId = ownTopic;
    options.lastWill = {ownTopic, "", false};
    return std::make_shared<Mqtt::Connection>(options);
}

}  // namespace

class Spectator::Listener : public Mqtt::BrokerListener {
public:
    void brokerConnected() override { isConnected = true; }
    void brokerLost() override { throw std::runtime_error("the broker has gone"); }
    void received(const Mqtt::Message& message) override { messages.push_back(message); }
    void acknowledged(int /*number*/) override {}

    bool isConnected = false;
    std::deque<Mqtt::Message> messages;
};

Spectator::Spectator(int port, std::vector<std::string> topics)
    : connection(connectionTo(port)), listener(std::make_shared<Listener>()) {
    connection->listen(*listener);
    const auto until = Clock::now() + std::chrono::seconds(20);
    while (!listener->isConnected) {
        turn(until);
    }
    topics.emplace_back(ownTopic);
    connection->subscribe(topics);
    // What is published after a subscription comes after it.
    connection->publish({ownTopic, "", false});
    receive([](const auto& message) { return message.topic == ownTopic; });
}

void Spectator::receive(const std::function<bool(const Mqtt::Message&)>& take, std::chrono::seconds deadline) {
    const auto until = Clock::now() + deadline;
    for (;;) {
        while (!listener->messages.empty()) {
            const Mqtt::Message message = std::move(listener->messages.front());
            listener->messages.pop_front();
            if (take(message)) {
                return;
            }
        }
        turn(until);
    }
}

void Spectator::turn(Clock::time_point until) {
    const auto now = Clock::now();
    if (now > until) {
        throw std::runtime_error("a message did not come");
    }
    const auto wanted = connection->wanted();
    pollfd watched{wanted.descriptor, wanted.events, 0};
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(std::min(until, wanted.time.value_or(until)) - now);
    ::poll(&watched, 1, static_cast<int>(std::max<std::int64_t>(0, wait.count())));
    connection->process(watched.revents);
}

}  // namespace Benchmarks
