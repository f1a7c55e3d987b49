#pragma once

#include <memory>
#include <string>
#include <vector>

#include "SettingsHandlerKit/TrafficObserver.h"

namespace SettingsHandlerKit {

/// Passes every notification on to each of its observers, in the order in which they were added.
class TrafficObservers : public TrafficObserver {
public:
    void add(std::shared_ptr<TrafficObserver> observer) { observers.push_back(std::move(observer)); }

    void clientConnected(const Client& client) override {
        for (const auto& observer : observers) {
            observer->clientConnected(client);
        }
    }
    void clientRefused(Origin origin) override {
        for (const auto& observer : observers) {
            observer->clientRefused(origin);
        }
    }
    void clientDisconnected(const Client& client, DisconnectReason reason) override {
        for (const auto& observer : observers) {
            observer->clientDisconnected(client, reason);
        }
    }
    void frameReceived(const Client& client, const std::string& frame) override {
        for (const auto& observer : observers) {
            observer->frameReceived(client, frame);
        }
    }
    void frameSent(const Client* receiver, const std::string& frame) override {
        for (const auto& observer : observers) {
            observer->frameSent(receiver, frame);
        }
    }
    void frameRefused(const std::string& code) override {
        for (const auto& observer : observers) {
            observer->frameRefused(code);
        }
    }
    void requestHandled(int type, RequestOutcome outcome) override {
        for (const auto& observer : observers) {
            observer->requestHandled(type, outcome);
        }
    }

private:
    std::vector<std::shared_ptr<TrafficObserver>> observers;
};

}  // namespace SettingsHandlerKit
