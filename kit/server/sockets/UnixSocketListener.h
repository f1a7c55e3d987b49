#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "SettingsHandlerKit/ClientListener.h"
#include "server/loop/EventLoop.h"
#include "server/loop/Turns.h"
#include "server/sockets/Acceptor.h"
#include "server/sockets/Backlog.h"
#include "server/sockets/ByteStream.h"
#include "server/sockets/SocketFile.h"

namespace SettingsHandlerKit {

class StreamClient;

/// A Unix socket at which clients speak newline-delimited frames.
///
/// - A client's frames are taken in order, in bounded turns. While frames wait, nothing more is read from that client.
/// - The limits of ListenerLimits.h hold. A client for which there is no room gets the refusal "too-many-clients", then
///   the connection is closed; also when there is no descriptor left.
/// - A client that stops sending still gets its replies, then the connection is closed. Frames that a client sent
///   before it closed are taken, even if it read nothing.
///
/// The program ignores SIGPIPE. One thread only. The event loop outlives it, and runs once more after `close`.
class UnixSocketListener {
public:
    /// Serves clients of `origin` that connect to `socket`, and notifies `clientListener`, which outlives it. What
    /// waits for them counts in `backlog`. Without a socket only those of `serve`.
    UnixSocketListener(EventLoop& loop, std::unique_ptr<SocketFile> socket, Origin origin,
                       ClientListener& clientListener, std::shared_ptr<Backlog> backlog = std::make_shared<Backlog>());
    /// The same at `place`, see `SocketFile`. Errors: `ListenerError`.
    UnixSocketListener(EventLoop& loop, SocketPlace place, Origin origin, ClientListener& clientListener,
                       std::shared_ptr<Backlog> backlog = std::make_shared<Backlog>());
    ~UnixSocketListener();

    UnixSocketListener(const UnixSocketListener&) = delete;
    UnixSocketListener& operator=(const UnixSocketListener&) = delete;

    /// Serves one more client, which need not have come by the socket.
    void serve(const std::shared_ptr<ByteStream>& stream);

    /// Takes no more clients and frames, and closes each connection when its backlog is sent.
    void close();
    /// The socket once more, for another listener: it still listens when this one is closed.
    Descriptor duplicate() { return acceptor->duplicate(); }
    /// Leaves the file to the other listener. Returns: whether that one is to remove it at its end.
    bool leaveFile() { return file->leave(); }
    /// Closes the remaining connections at once.
    void closeNow();

private:
    void accept(int descriptor);
    void refuse(int descriptor);
    void remove(StreamClient& client);

    EventLoop& loop;
    Origin origin;
    ClientListener& clientListener;
    std::shared_ptr<Backlog> backlog;
    std::unique_ptr<SocketFile> file;
    std::optional<Acceptor> acceptor;
    Turns turns;
    std::unordered_map<StreamClient*, std::shared_ptr<StreamClient>> clients;
    bool closing = false;
};

}  // namespace SettingsHandlerKit
