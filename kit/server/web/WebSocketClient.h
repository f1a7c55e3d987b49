#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "server/sockets/Client.h"
#include "server/sockets/ListenerEvents.h"

struct lws;

namespace SettingsHost {

/// One WebSocket connection. Its server calls the operations below as the connection does what they say; those that
/// return a bool answer false when the connection is to be closed now.
class WebSocketClient : public Client, public std::enable_shared_from_this<WebSocketClient> {
public:
    WebSocketClient(lws* connection, Origin origin, const ListenerEvents& events);

    void send(const std::shared_ptr<const std::string>& frame) override;
    Origin origin() const override { return clientOrigin; }

    void arrived();
    /// A piece of a message came in.
    bool received(const char* bytes, std::size_t size);
    /// The connection takes more.
    bool writable();
    /// The moment to close has come.
    bool timerExpired();
    void left();

    /// The other side takes leave: what it sends after that is no frame.
    void peerCloses() { gone = true; }

    /// Closes when everything that waits is sent.
    void finish();
    /// Closes with 4401, because what it came with is worthless now: at once, or when what was begun is read, within
    /// two seconds.
    void revoke();

private:
    bool close(unsigned short status, const char* reason);
    bool mayWriteAtOnce(const std::string& frame) const;
    bool writePart(std::size_t size);
    bool writeTurn();
    bool write(const std::string& frame, std::size_t from, std::size_t size);
    bool isBehind() const { return waiting.unread() > maximumUnread; }
    void drop(DisconnectReason why);

    lws* connection;
    Origin clientOrigin;
    const ListenerEvents& events;
    std::string message;
    ClientBacklog waiting;
    /// How much of the first of them is on its way.
    std::size_t written = 0;
    /// Is it being told what it asked for?
    bool answering = false;
    bool paused = false;
    bool finishing = false;
    bool revoked = false;
    bool gone = false;
    DisconnectReason departure = DisconnectReason::CLOSED;
};

}  // namespace SettingsHost
