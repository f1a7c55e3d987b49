#pragma once

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "Fault.h"
#include "OneThread.h"
#include "SettingsHandlerTesting/JsonText.h"
#include "SettingsHandlerTesting/contracts/TransportContract.h"

namespace SettingsHandlerTests {

/// A transport with two clients in its own process that has only the current fault.
class FaultyTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    using Message = SettingsHandlerTesting::ReceivedMessage;
    using Handler = std::function<void(const std::string&)>;

    FaultyTransport()
        : CommunicationHandlerInterface(Fault::is("names no message id") ? "" : "messageId", "timestamp",
                                        Fault::is("names two members alike") ? "timestamp" : "payload") {}

    std::string sendMessage(int messageType, rapidjson::Document& payload) override {
        if (Fault::is("works on one thread only (transport)")) {
            thread.expectHere();
        }
        const std::lock_guard<std::mutex> lock(mutex);
        const std::string messageId = Fault::is("has one id for all events") ? "e" : "e" + std::to_string(++events);
        if (Fault::is("sends events during requests only") && askingThread != std::this_thread::get_id()) {
            return messageId;
        }
        Message message{Message::EVENT, messageType, messageId, textOf(payload)};
        if (Fault::is("sends another id than it returns")) {
            message.messageId += "x";
        }
        for (int client = 0; client < 2; ++client) {
            const bool isCause = requester == client && askingThread == std::this_thread::get_id();
            if (!Fault::is("does not send an event to the client that caused it") || !isCause) {
                put(client, message, &payload);
            }
        }
        return messageId;
    }

    void sendResponse(const std::string& messageId, rapidjson::Document& payload) override {
        const std::lock_guard<std::mutex> lock(mutex);
        Message message{Message::REPLY, 0, messageId, textOf(payload)};
        if (Fault::is("changes message ids")) {
            message.messageId = messageId == "0" || messageId == "m1" ? messageId : "0";
        }
        for (int client = 0; client < 2; ++client) {
            if (client == (Fault::is("replies to the first client") ? 0 : *requester) ||
                Fault::is("replies to all clients")) {
                put(client, message, &payload);
            }
        }
    }

    void registerMessageHandler(int messageType, Handler handler) override {
        if (early && Fault::is("delivers requests from before the registration")) {
            handler(*early);
        }
        if (Fault::is("has one handler for all types")) {
            handlers.clear();
        }
        if (!Fault::is("keeps no handler")) {
            handlers[messageType] = std::move(handler);
        }
    }

    void receive(int client, int messageType, const std::string& text) {
        early = text;
        const auto handler = handlerOf(messageType);
        if (!handler || isDead) {
            isDead = isDead || Fault::is("stops after an unknown type");
            return;
        }
        ask(client);
        try {
            handler(Fault::is("reformats requests") ? compact(text) : text);
        } catch (...) {
            isDead = Fault::is("stops after an exception");
            ask(std::nullopt);
            throw;
        }
        ask(std::nullopt);
    }

    std::vector<Message> take(int client) {
        const std::lock_guard<std::mutex> lock(mutex);
        auto& inbox = inboxes.at(static_cast<std::size_t>(client));
        if (Fault::is("sends replies first")) {
            std::stable_partition(inbox.begin(), inbox.end(),
                                  [](const auto& sent) { return sent.first.kind == Message::REPLY; });
        }
        std::vector<Message> messages;
        for (auto& [message, payload] : inbox) {
            if (Fault::is("serialises payloads later")) {
                message.payload = SettingsHandlerTesting::jsonText(*payload);
            }
            messages.push_back(std::move(message));
        }
        inbox.clear();
        return messages;
    }

private:
    void ask(std::optional<int> client) {
        const std::lock_guard<std::mutex> lock(mutex);
        requester = client;
        askingThread = client ? std::this_thread::get_id() : std::thread::id();
    }

    static std::string compact(const std::string& text) {
        rapidjson::Document document;
        document.Parse(text.c_str());
        return SettingsHandlerTesting::jsonText(document);
    }

    static std::string textOf(const rapidjson::Document& payload) {
        const std::string text = SettingsHandlerTesting::jsonText(payload);
        return Fault::is("cuts large messages") ? text.substr(0, 4096) : text;
    }

    Handler handlerOf(int messageType) const {
        if (Fault::is("delivers unknown types to another handler") && !handlers.empty()) {
            return handlers.begin()->second;
        }
        if (Fault::is("has one handler for all types") && !handlers.empty()) {
            return handlers.begin()->second;
        }
        const auto entry = handlers.find(messageType);
        return entry == handlers.end() ? nullptr : entry->second;
    }

    void put(int client, const Message& message, const rapidjson::Document* payload) {
        inboxes.at(static_cast<std::size_t>(client)).emplace_back(message, payload);
    }

    OneThread thread;
    std::mutex mutex;
    std::map<int, Handler> handlers;
    std::array<std::vector<std::pair<Message, const rapidjson::Document*>>, 2> inboxes;
    std::optional<int> requester;
    std::thread::id askingThread;
    std::optional<std::string> early;
    int events = 0;
    bool isDead = false;
};

struct FaultyTransportMaker {
    static constexpr bool anyThread = true;
    FaultyTransport own;
    CommunicationHandler::CommunicationHandlerInterface& transport() { return own; }
    void send(int client, int messageType, const std::string& text) { own.receive(client, messageType, text); }
    std::vector<SettingsHandlerTesting::ReceivedMessage> take(int client) { return own.take(client); }
};

}  // namespace SettingsHandlerTests
