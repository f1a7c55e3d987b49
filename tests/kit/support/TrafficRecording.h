#pragma once

#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/TrafficObserver.h"

namespace SettingsHandlerKit {

/// Keeps the notifications as lines, in order.
class TrafficRecording : public TrafficObserver {
public:
    void clientConnected(const Client& client) override {
        add(std::string("connected ") + originName(client.origin()));
    }
    void clientRefused(Origin origin) override { add(std::string("no room ") + originName(origin)); }
    void clientDisconnected(const Client& client, DisconnectReason reason) override {
        add(std::string("disconnected ") + originName(client.origin()) +
            (reason == DisconnectReason::TOO_SLOW ? " TOO_SLOW" : " CLOSED"));
    }
    void frameReceived(const Client& /*client*/, const std::string& frame) override { add("received " + frame); }
    void frameSent(const Client* receiver, const std::string& frame) override {
        add((receiver == nullptr ? "sent to all " : "sent to one ") + frame);
    }
    void frameRefused(const std::string& code) override { add("refused " + code); }
    void requestHandled(int type, RequestOutcome outcome) override {
        static const char* const names[] = {"ANSWERED", "CHANGED", "SILENT", "REJECTED", "FAILED"};
        add("handled " + std::to_string(type) + " " + names[static_cast<int>(outcome)]);
    }

    std::vector<std::string> take() { return std::exchange(lines, {}); }

private:
    void add(std::string line) { lines.push_back(std::move(line)); }

    std::vector<std::string> lines;
};

}  // namespace SettingsHandlerKit
