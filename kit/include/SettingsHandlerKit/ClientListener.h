#pragma once

#include <memory>
#include <string>

#include "SettingsHandlerKit/Client.h"

namespace SettingsHandlerKit {

/// Notified by listeners of their clients and the clients' frames, always from the event loop and never from inside
/// `Client::send`. A client is passed to these operations only from `connected` to
/// `disconnected`.
class ClientListener {
public:
    ClientListener() = default;
    ClientListener(const ClientListener&) = delete;
    ClientListener& operator=(const ClientListener&) = delete;
    virtual ~ClientListener() = default;

    /// A client has connected.
    virtual void connected(const std::shared_ptr<Client>& client) = 0;
    /// A client is gone; it is sent nothing more.
    virtual void disconnected(const std::shared_ptr<Client>& client, DisconnectReason reason) = 0;
    /// A frame of a client came in, complete and within the limit.
    virtual void received(const std::shared_ptr<Client>& client, const std::string& frame) = 0;
    /// A frame over the limit came in. Only from listeners that can skip the rest of it.
    virtual void oversized(const std::shared_ptr<Client>& client) = 0;
    /// A connection was refused because there was no room for one more.
    virtual void refused(Origin origin) = 0;
};

}  // namespace SettingsHandlerKit
