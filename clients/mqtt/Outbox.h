#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "mqtt/Broker.h"

namespace Mqtt {

/// Messages on their way to the broker. What it has not acknowledged when the connection is lost is sent again, except
/// retained messages: all of them are given anew to `connected`. Its size is bounded.
class Outbox {
public:
    /// Messages that a broker may leave unacknowledged before others wait.
    static constexpr std::size_t window = 20;
    /// Bytes of waiting payloads without a slot; beyond, the oldest is dropped.
    static constexpr std::size_t maximumWaiting = 1048576;

    explicit Outbox(std::shared_ptr<Broker> connection) : broker(std::move(connection)) {}

    /// Sends the message as soon as possible. It replaces one of the same slot that still waits; of messages without a
    /// slot each counts. Retained ones have their topic as slot.
    void add(Message message, const std::string& slot = "");
    /// Drops what was not acknowledged of this slot.
    void forget(const std::string& slot);

    /// Sends `first`, which are retained, then what waits.
    void connected(std::vector<Message> first);
    void lost();
    void acknowledged(int number);

    bool isEmpty() const { return entries.empty(); }

private:
    struct Entry {
        Message message;
        std::string slot;
        /// Nothing: it waits.
        std::optional<int> number = std::nullopt;
    };

    void enqueue(Message message, const std::string& slot);
    void send();

    const std::shared_ptr<Broker> broker;
    bool isConnected = false;
    /// What was sent comes first.
    std::deque<Entry> entries;
};

}  // namespace Mqtt
