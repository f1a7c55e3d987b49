#pragma once

#include <memory>
#include <string>

#include "SettingsHandlerKit/Descriptor.h"
#include "server/loop/EventLoop.h"
#include "server/loop/UvHandle.h"
#include "server/sockets/ByteStream.h"

namespace SettingsHandlerKit {

/// The bytes of a connected socket, Unix or TCP. The program ignores SIGPIPE.
class SocketStream : public ByteStream, public UvHandle<uv_poll_t, SocketStream> {
public:
    /// `socket` is non-blocking. Returns: null when the event loop cannot watch it.
    static std::shared_ptr<ByteStream> open(EventLoop& loop, Descriptor socket);

    void setUser(User* newUser) override { user = newUser; }
    bool isOpen() const override { return socket.get() >= 0; }
    void startReading() override;
    void stopReading() override;
    bool readNow() override;
    void write(const std::string& bytes) override;
    bool isWriting() const override { return !rest.empty(); }
    void endOutput() override;
    void close() override;

    /// libuv has let go of the handle.
    void closed();

private:
    void watch();
    void ready(bool isReadable, bool isWritable);
    /// Returns: whether something came in.
    bool read();
    void sendRest();

    Descriptor socket;
    User* user = nullptr;
    bool reading = false;
    bool inputOver = false;
    /// What the system did not take, and how much of it it has taken since.
    std::string rest;
    std::size_t sentOfRest = 0;
};

}  // namespace SettingsHandlerKit
