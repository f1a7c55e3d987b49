#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "SettingsClient/Answer.h"
#include "SettingsClient/Setting.h"

namespace SettingsMqtt {

/// Levels as everywhere: 0 traces to 3 errors.
using Log = std::function<void(int level, const std::string& text)>;

struct Message {
    std::string topic;
    std::string payload;
    /// Sent: the broker keeps it for later subscribers. Received: it was kept, and is older than the subscription.
    bool retained = false;
};

/// The connection to a broker, at QoS 1. Each one starts without a session.
class Broker {
public:
    virtual ~Broker() = default;
    /// Asks for messages of these topics.
    virtual void subscribe(const std::vector<std::string>& topics) = 0;
    /// Returns: the number with which `BrokerListener::acknowledged` is called, unless the connection is lost before.
    virtual int publish(const Message& message) = 0;
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

/// The connection to a host. Operations and errors are those of `SettingsClient::Client`.
class Host {
public:
    virtual ~Host() = default;
    virtual std::vector<SettingsClient::Setting> catalogue() = 0;
    virtual std::map<std::string, std::string> get(const std::vector<std::string>& keys) = 0;
    virtual SettingsClient::Answer set(const std::string& key, const std::string& value,
                                       std::optional<std::int64_t> timestamp) = 0;
};

}  // namespace SettingsMqtt
