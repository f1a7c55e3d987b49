#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "server/loop/UvHandle.h"
#include "server/sockets/Backlog.h"
#include "server/sockets/Client.h"
#include "server/sockets/LineFramer.h"

namespace SettingsHandlerKit {

class UnixSocketListener;

/// One connection at a Unix socket. Owned by its listener until it is gone, and by libuv until the handle is closed.
class SocketClient : public Client, public UvHandle<uv_pipe_t, SocketClient> {
public:
    /// `owningListener` calls `detach` before it goes.
    SocketClient(UnixSocketListener& owningListener, Origin origin);

    void send(const std::shared_ptr<const std::string>& frame) override;
    Origin origin() const override { return clientOrigin; }
    ListenerKind listenerKind() const override { return ListenerKind::UNIX_SOCKET; }
    DisconnectReason disconnectReason() const { return backlog.disconnectReason(); }

    /// Reads from now on.
    void start();
    /// Takes up to a turn's frames, then reads on, waits for another turn or for the client to read, or closes.
    void takeFrames();
    /// Closes when its backlog is sent.
    void finish();
    /// Closes at once.
    void drop();
    void detach() { listener = nullptr; }
    /// Notifies the listener that this client is gone.
    void closed();

private:
    /// Returns: how many bytes the kernel took.
    std::size_t writeAtOnce(const std::string& line);
    /// Leaves the next frames that wait to libuv, unless it has some.
    void writeOn();
    void written(int status);
    void shutDown();
    void received(ssize_t count, const char* bytes);
    void takeTurn(const std::shared_ptr<SocketClient>& self);
    void countInput();
    void pauseWhenFull();
    void readOn();
    void pause();

    UnixSocketListener* listener;
    Origin clientOrigin;
    LineFramer framer;
    ClientBacklog backlog;
    /// What libuv writes: the first frames of the backlog, and nothing else that this client owns.
    uv_write_t write{};
    std::size_t framesOnTheirWay = 0;
    /// How much of the first frame and its line end the kernel took before libuv was given the rest.
    std::size_t sentOfFirst = 0;
    bool reading = false;
    bool inputEnded = false;
    bool outputEnded = false;
};

}  // namespace SettingsHandlerKit
