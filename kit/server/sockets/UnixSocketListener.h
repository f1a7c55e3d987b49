#pragma once

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "server/loop/EventLoop.h"
#include "server/sockets/Acceptor.h"
#include "server/sockets/Backlog.h"
#include "server/sockets/ClientListener.h"
#include "server/sockets/SocketFile.h"

namespace SettingsHandlerKit {

class SocketClient;

/// A Unix socket at which clients speak newline-delimited frames.
///
/// - A client's frames are taken in order, a bounded number and for a bounded time a turn, so that one client's burst
///   does not delay the others. While frames wait, nothing more is read from that client.
/// - The limits of ListenerLimits.h hold. A client for which there is no room gets the refusal "too-many-clients", then
///   the connection is closed; also when there is no descriptor left.
/// - A client that stops sending still gets its replies, then the connection is closed. Frames that a client sent
/// before
///   it closed are taken, even if it read nothing.
///
/// The program ignores SIGPIPE. One thread only. The event loop outlives it, and runs once more after `close`.
class UnixSocketListener {
public:
    static constexpr std::size_t framesPerTurn = 16;
    /// A turn ends with the frame in which it becomes as long as this: some frames take a hundred times as long as
    /// others.
    static constexpr std::chrono::microseconds longestTurn{300};

    /// Serves clients of `origin` that connect to `socket`, and notifies `clientListener`, which outlives it. What
    /// waits for them counts in `backlog`.
    UnixSocketListener(EventLoop& loop, std::unique_ptr<SocketFile> socket, Origin origin,
                       ClientListener& clientListener, std::shared_ptr<Backlog> backlog = std::make_shared<Backlog>());
    /// The same at `place`, see `SocketFile`. Errors: `ListenerError`.
    UnixSocketListener(EventLoop& loop, SocketPlace place, Origin origin, ClientListener& clientListener,
                       std::shared_ptr<Backlog> backlog = std::make_shared<Backlog>());
    ~UnixSocketListener();

    UnixSocketListener(const UnixSocketListener&) = delete;
    UnixSocketListener& operator=(const UnixSocketListener&) = delete;

    const std::string& path() const { return file->path(); }

    /// Takes no more clients and frames, and closes each connection when its backlog is sent.
    void close();
    /// Closes the remaining connections at once.
    void closeNow();

private:
    friend class SocketClient;
    class Turns;

    /// Not initialised, so that it takes no more of the machine's memory than what is read at once.
    struct ReadBuffer {
        ReadBuffer() {}  // NOLINT(modernize-use-equals-default): that would initialise it
        std::array<char, 65536> bytes;
    };

    void accept(int descriptor);
    void refuse(int descriptor);
    void continueLater(const std::shared_ptr<SocketClient>& client);
    void takeTurn();
    void remove(SocketClient& client);
    /// `frame` with its line end, valid until the next call. Made once for an event that goes to all clients.
    const std::string& lineOf(const std::shared_ptr<const std::string>& frame);

    EventLoop& loop;
    Origin origin;
    ClientListener& clientListener;
    std::shared_ptr<Backlog> backlog;
    std::unique_ptr<SocketFile> file;
    Acceptor acceptor;
    std::shared_ptr<Turns> turns;
    std::unordered_map<SocketClient*, std::shared_ptr<SocketClient>> clients;
    /// Where all clients are read into, one after the other.
    std::unique_ptr<ReadBuffer> readBuffer;
    std::vector<std::shared_ptr<SocketClient>> waiting;
    std::weak_ptr<const std::string> lastFrame;
    std::string lastLine;
    bool closing = false;
};

}  // namespace SettingsHandlerKit
