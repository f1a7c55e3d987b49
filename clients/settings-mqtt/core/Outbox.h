#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Broker.h"

namespace SettingsMqtt {

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

    /// Sends `first`, then what waits.
    void connected(std::vector<Message> first);
    void lost();
    void acknowledged(int number);

    bool isEmpty() const { return waiting.empty() && sent.empty(); }

private:
    struct Entry {
        Message message;
        std::string slot;
    };

    static std::size_t bytesOf(const Entry& entry) { return entry.slot.empty() ? entry.message.payload.size() : 0; }
    void enqueue(Entry entry);
    Entry take(std::deque<Entry>::iterator place);
    void send();

    std::shared_ptr<Broker> broker;
    bool isConnected = false;
    std::deque<Entry> waiting;
    std::size_t bytesWithoutSlot = 0;
    /// In the order of sending.
    std::deque<std::pair<int, Entry>> sent;
};

}  // namespace SettingsMqtt
