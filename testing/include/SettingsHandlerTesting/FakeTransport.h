#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "SettingsHandlerTesting/Journal.h"
#include "SettingsHandlerTesting/JsonText.h"
#include "SettingsHandlerTesting/Requests.h"

namespace SettingsHandlerTesting {

/// A message that the handler sent.
struct SentMessage {
    /// The type of an event; 0 for a reply.
    int type = 0;
    /// Of a reply: the id of its request. Of an event: the result of `sendMessage`.
    std::string messageId;
    /// Compact JSON text.
    std::string payload;

    /// Returns: whether it is a reply, not an event.
    bool isReply() const { return type == 0; }
};

/// Compares all members; and prints for failing tests.
/// @{
inline bool operator==(const SentMessage& left, const SentMessage& right) {
    return left.type == right.type && left.messageId == right.messageId && left.payload == right.payload;
}
inline bool operator!=(const SentMessage& left, const SentMessage& right) {
    return !(left == right);
}
inline std::ostream& operator<<(std::ostream& stream, const SentMessage& message) {
    return stream << (message.isReply() ? "reply " : "event of type " + std::to_string(message.type) + " ")
                  << message.messageId << " " << message.payload;
}
/// @}

/// A transport in memory: a test delivers requests and reads the messages that were sent.
///
///     EXPECT_EQ(transport.request(CommunicationHandler::GET_SETTINGS, settingsPayload({"deviceName"})),
///               R"({"settings":{"deviceName":"TV"}})");
///
/// Entries: `transport.registerMessageHandler(7)`, `transport.sendMessage(25, {…})`, `transport.sendResponse(m1, {…})`.
///
/// Options: the names of the envelope's members; `keepsPayloads`; exceptions and delays through `Journal::at`.
///
/// Threads: any for the operations. Requests are handled on the thread that delivers them.
///
/// Differences from a real one: it has no clients, no size limit and no framing. An exception of the handler passes to
/// the test. Requests run concurrently when a test delivers them from several threads. It keeps the callbacks after the
/// handler is destroyed: do not deliver then.
class FakeTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    /// Records into `recorder`, which must outlive it.
    explicit FakeTransport(Journal& recorder) : journal(recorder) {}
    /// With other names of the envelope's members.
    FakeTransport(Journal& recorder, const std::string& messageId, const std::string& timestamp,
                  const std::string& payload)
        : CommunicationHandlerInterface(messageId, timestamp, payload), journal(recorder) {}

    /// Option: a transport may move payloads away, and this one does unless this is true.
    bool keepsPayloads = false;

    /// Delivers a request as a client sends it, with its own message id ("m1", "m2", …) and increasing time stamps.
    /// `payload`: JSON text. Returns: the payload of the reply; empty when there was none.
    std::string request(int messageType, const std::string& payload = "{}") {
        long long number = 0;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            number = ++requests;
        }
        const std::string messageId = "m" + std::to_string(number);
        deliver(messageType, requestText(*this, messageType, messageId, number, payload));
        return replyTo(messageId);
    }

    /// Calls the handler registered for `messageType` with `text`. Errors: `std::out_of_range` when there is none.
    void deliver(int messageType, const std::string& text) {
        std::function<void(const std::string&)> handler;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            handler = handlers.at(messageType);
        }
        handler(text);
    }

    /// Returns: whether a handler is registered for `messageType`.
    bool handles(int messageType) {
        const std::lock_guard<std::mutex> lock(mutex);
        return handlers.count(messageType) > 0;
    }

    /// Removes and returns all messages sent so far, in order.
    std::vector<SentMessage> takeSent() {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::exchange(sent, {});
    }

    /// Removes and returns the events sent so far; replies stay.
    std::vector<SentMessage> takeEvents() { return take(false); }

    /// Removes and returns the replies sent so far, those to `request` included; events stay.
    std::vector<SentMessage> takeReplies() { return take(true); }

    std::string sendMessage(int messageType, rapidjson::Document& payload) override {
        const std::string text = jsonText(payload);
        journal.add("transport.sendMessage(" + std::to_string(messageType) + ", " + text + ")");
        released(payload);
        const std::lock_guard<std::mutex> lock(mutex);
        sent.push_back({messageType, "event-" + std::to_string(++events), text});
        return sent.back().messageId;
    }

    void sendResponse(const std::string& messageId, rapidjson::Document& payload) override {
        const std::string text = jsonText(payload);
        journal.add("transport.sendResponse(" + messageId + ", " + text + ")");
        released(payload);
        const std::lock_guard<std::mutex> lock(mutex);
        sent.push_back({0, messageId, text});
    }

    void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) override {
        journal.add("transport.registerMessageHandler(" + std::to_string(messageType) + ")");
        const std::lock_guard<std::mutex> lock(mutex);
        handlers[messageType] = std::move(handler);
    }

private:
    void released(rapidjson::Document& payload) const {
        if (!keepsPayloads) {
            const rapidjson::Document taken(std::move(payload));
        }
    }

    std::vector<SentMessage> take(bool replies) {
        const std::lock_guard<std::mutex> lock(mutex);
        std::vector<SentMessage> taken;
        std::vector<SentMessage> left;
        for (auto& message : sent) {
            (message.isReply() == replies ? taken : left).push_back(std::move(message));
        }
        sent = std::move(left);
        return taken;
    }

    std::string replyTo(const std::string& messageId) {
        const std::lock_guard<std::mutex> lock(mutex);
        for (const auto& message : sent) {
            if (message.isReply() && message.messageId == messageId) {
                return message.payload;
            }
        }
        return {};
    }

    Journal& journal;
    std::mutex mutex;
    std::map<int, std::function<void(const std::string&)>> handlers;
    std::vector<SentMessage> sent;
    long long requests = 0;
    long long events = 0;
};

}  // namespace SettingsHandlerTesting
