#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "server/sockets/Backlog.h"
#include "server/sockets/ClientListener.h"

struct lws;

namespace SettingsHandlerKit {

/// One WebSocket connection. Its server calls the operations below for what libwebsockets reports; those that return a
/// bool return false when the connection is to be closed now.
class WebSocketClient : public Client, public std::enable_shared_from_this<WebSocketClient> {
public:
    /// `clientListener` outlives it. What waits for the client counts in `backlog`.
    WebSocketClient(lws* connection, Origin origin, ClientListener& clientListener, std::shared_ptr<Backlog> backlog);

    void send(const std::shared_ptr<const std::string>& frame) override;
    Origin origin() const override { return clientOrigin; }
    ListenerKind listenerKind() const override { return ListenerKind::WEB; }

    void opened();
    /// A part of a message came in.
    bool received(const char* bytes, std::size_t size);
    /// The connection takes more.
    bool writable();
    /// The moment to close has come.
    bool timerExpired();
    void closed();

    /// The other side sent a close frame: data after it is ignored.
    void peerCloses() { gone = true; }

    /// Closes when its backlog is sent.
    void finish();
    /// Closes with 4401, because key or cookie are no longer valid: at once, or, when a frame was sent in part, after
    /// the rest of it is read, within two seconds.
    void revoke();

private:
    bool close(unsigned short status, const char* reason);
    bool mayWriteAtOnce(const std::string& frame) const;
    bool writePart(std::size_t size);
    bool writeTurn();
    bool write(const std::string& frame, std::size_t from, std::size_t size);
    void drop();

    lws* connection;
    Origin clientOrigin;
    ClientListener& clientListener;
    std::string message;
    ClientBacklog backlog;
    /// How much of the backlog's first frame is on its way.
    std::size_t written = 0;
    /// Is one of its frames being handled?
    bool handling = false;
    bool revoked = false;
    bool gone = false;
};

}  // namespace SettingsHandlerKit
