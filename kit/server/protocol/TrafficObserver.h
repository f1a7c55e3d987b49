#pragma once

#include <string>

#include "server/sockets/Client.h"
#include "server/sockets/ListenerEvents.h"

namespace SettingsHost {

/// What became of a request, as far as it can be seen from outside the handler.
enum class RequestOutcome {
    /// A reply was sent.
    ANSWERED,
    /// An event was sent.
    CHANGED,
    /// Neither: nothing to say, or refused by the handler.
    SILENT,
    /// Not given to the handler, because it would end the process.
    REJECTED,
    /// An exception came out of the handler.
    FAILED,
};

/// Told of what passes the listeners. It does not call back.
class TrafficObserver {
public:
    TrafficObserver() = default;
    TrafficObserver(const TrafficObserver&) = delete;
    TrafficObserver& operator=(const TrafficObserver&) = delete;
    virtual ~TrafficObserver() = default;

    virtual void clientConnected(const Client& client) = 0;
    /// Nobody came in at a listener for `origin`, because there was no room.
    virtual void clientRefused(Origin origin) = 0;
    virtual void clientDisconnected(const Client& client, DisconnectReason departure) = 0;
    virtual void frameReceived(const Client& client, const std::string& frame) = 0;
    /// `receiver` is null when the frame goes to every client of the settings listeners.
    virtual void frameSent(const Client* receiver, const std::string& frame) = 0;
    virtual void frameRefused(const std::string& code) = 0;
    virtual void requestHandled(int type, RequestOutcome outcome) = 0;
};

}  // namespace SettingsHost
