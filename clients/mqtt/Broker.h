#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Mqtt {

struct Message {
    std::string topic;
    std::string payload;
    /// Sent: the broker keeps it for later subscribers. Received: it was kept, and is older than the subscription.
    bool retained = false;
};

/// What a client asks of a broker, at QoS 1. Each connection starts without a session.
class Broker {
public:
    virtual ~Broker() = default;
    /// Asks for messages of these topics.
    virtual void subscribe(const std::vector<std::string>& topics) = 0;
    /// Returns: the number with which `BrokerListener::acknowledged` is called, unless the connection is lost before;
    /// nothing when the message is dropped, since the broker does not accept one of this size.
    virtual std::optional<int> publish(const Message& message) = 0;
};

/// Is told what happens at a broker, one call at a time and never from within a call of `Broker`.
class BrokerListener {
public:
    virtual ~BrokerListener() = default;
    virtual void brokerConnected() = 0;
    /// Nothing of what was published before is sent or acknowledged after this.
    virtual void brokerLost() = 0;
    virtual void received(const Message& message) = 0;
    /// The broker has taken the message of this number.
    virtual void acknowledged(int number) = 0;
};

}  // namespace Mqtt
