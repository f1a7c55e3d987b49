#pragma once

#include <optional>
#include <string>
#include <vector>

#include "mqtt/Broker.h"

namespace MqttTest {

using Lines = std::vector<std::string>;

/// Takes everything and acknowledges nothing by itself. Messages are a line each: "TOPIC PAYLOAD", retained ones with a
/// "*" before.
class FakeBroker : public Mqtt::Broker {
public:
    void subscribe(const std::vector<std::string>& topics) override { subscribed = topics; }
    std::optional<int> publish(const Mqtt::Message& message) override {
        if (message.payload.size() > maximumPayload) {
            return std::nullopt;
        }
        lines.push_back((message.retained ? "*" : "") + message.topic + " " + message.payload);
        return ++last;
    }

    std::vector<std::string> subscribed;
    std::size_t maximumPayload = std::string().max_size();
    Lines lines;
    int last = 0;
};

}  // namespace MqttTest
