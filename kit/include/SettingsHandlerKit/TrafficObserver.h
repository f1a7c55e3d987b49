#pragma once

#include <string>

#include "SettingsHandlerKit/Client.h"

namespace SettingsHandlerKit {

/// The result of a request, as far as it can be seen from outside the handler.
enum class RequestOutcome {
    /// A reply was sent.
    ANSWERED,
    /// An event was sent.
    CHANGED,
    /// Neither: nothing to send, or refused by the handler. An answer may have been sent.
    SILENT,
    /// Not given to the handler, because it would end the process.
    REJECTED,
    /// The handler threw an exception.
    FAILED,
};

/// Notified of connections, frames and requests. It does not call back.
class TrafficObserver {
public:
    TrafficObserver() = default;
    TrafficObserver(const TrafficObserver&) = delete;
    TrafficObserver& operator=(const TrafficObserver&) = delete;
    virtual ~TrafficObserver() = default;

    /// A client has connected.
    virtual void clientConnected(const Client& client) = 0;
    /// A connection at a listener for `origin` was refused because there was no room for one more.
    virtual void clientRefused(Origin origin) = 0;
    /// A client is gone.
    virtual void clientDisconnected(const Client& client, DisconnectReason reason) = 0;
    /// A frame of `client` came in.
    virtual void frameReceived(const Client& client, const std::string& frame) = 0;
    /// `receiver` is null when the frame goes to every client of the settings listeners.
    virtual void frameSent(const Client* receiver, const std::string& frame) = 0;
    /// The transport refused a frame with `code`.
    virtual void frameRefused(const std::string& code) = 0;
    /// A request of message type `type` is over.
    virtual void requestHandled(int type, RequestOutcome outcome) = 0;
};

}  // namespace SettingsHandlerKit
