#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "SettingsHandlerTesting/Journal.h"
#include "SettingsHandlerTesting/JsonText.h"

namespace SettingsHandlerTesting {

/// A transport without a wire. Entries: `transport.registerMessageHandler(7)`, `transport.sendMessage(25, {…})`,
/// `transport.sendResponse(m1, {…})`. Unlike a real one it keeps handlers after the handler is gone: do not deliver
/// then.
class FakeTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    explicit FakeTransport(Journal& recorder) : journal(recorder) {}
    /// With other names of the envelope's members.
    FakeTransport(Journal& recorder, const std::string& messageId, const std::string& timestamp,
                  const std::string& payload)
        : CommunicationHandlerInterface(messageId, timestamp, payload), journal(recorder) {}

    /// Calls the handler registered for `messageType` as if `text` had arrived.
    void deliver(int messageType, const std::string& text) { handlers.at(messageType)(text); }

    std::string sendMessage(int messageType, rapidjson::Document& payload) override {
        journal.add("transport.sendMessage(" + std::to_string(messageType) + ", " + jsonText(payload) + ")");
        return "ignored";
    }

    void sendResponse(const std::string& messageId, rapidjson::Document& payload) override {
        journal.add("transport.sendResponse(" + messageId + ", " + jsonText(payload) + ")");
    }

    void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) override {
        journal.add("transport.registerMessageHandler(" + std::to_string(messageType) + ")");
        handlers[messageType] = std::move(handler);
    }

private:
    Journal& journal;
    std::map<int, std::function<void(const std::string&)>> handlers;
};

}  // namespace SettingsHandlerTesting
