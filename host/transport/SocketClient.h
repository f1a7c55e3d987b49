#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "transport/DoorEvents.h"
#include "transport/LineFramer.h"
#include "transport/UvHandle.h"

namespace SettingsHost {

class UnixSocketDoor;

/// One connection at a Unix socket. Owned by its door until it leaves, and by libuv until the handle is closed.
class SocketClient : public Client, public UvHandle<uv_pipe_t, SocketClient> {
public:
    /// `owningDoor` calls `detach` before it goes.
    SocketClient(UnixSocketDoor& owningDoor, Origin origin);

    void send(const std::shared_ptr<const std::string>& frame) override;
    Origin origin() const override { return clientOrigin; }
    Departure departure() const { return reason; }

    /// Reads from now on.
    void start();
    /// Takes up to a turn's frames, then reads on, waits for another turn or for the client to read, or leaves.
    void takeFrames();
    /// Closes when everything that waits is sent.
    void finish();
    /// Closes at once.
    void drop();
    void detach() { door = nullptr; }
    /// Tells the door that this client is gone.
    void closed();

private:
    /// Returns: how many bytes the kernel took.
    std::size_t writeAtOnce(const std::string& line);
    /// Leaves what comes after the first `sent` bytes of a frame and its line end to libuv.
    void queue(const std::shared_ptr<const std::string>& frame, std::size_t sent);
    void received(ssize_t count, const char* bytes);
    void sent(int status);
    bool isBehind();
    void waitForReader();
    void readOn();
    void pause();

    UnixSocketDoor* door;
    Origin clientOrigin;
    Departure reason = Departure::CLOSED;
    LineFramer framer;
    bool reading = false;
    bool inputEnded = false;
    bool outputEnded = false;
    bool waitsForReader = false;
    bool finishing = false;
};

}  // namespace SettingsHost
