#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "server/loop/EventLoop.h"
#include "server/loop/UvHandle.h"
#include "server/sockets/ByteStream.h"
#include "simulation/Choices.h"

namespace SettingsSimulation {

/// What the system keeps of a connection: the bytes that are on their way.
struct Link {
    std::string toHost;
    std::string toClient;
    /// How many bytes wait for the client at most.
    std::size_t room = 0;
    /// The client sends no more.
    bool inputOver = false;
    /// The host sends no more.
    bool outputOver = false;
    bool clientReads = true;
    bool clientGone = false;
    /// The host's process is gone, or has closed it.
    bool hostGone = false;

    std::size_t roomLeft() const { return room > toClient.size() ? room - toClient.size() : 0; }
};

/// The host's end of a connection in memory. It keeps the event loop open, as a socket does.
class MemoryStream : public SettingsHandlerKit::ByteStream,
                     public SettingsHandlerKit::UvHandle<uv_async_t, MemoryStream> {
public:
    static std::shared_ptr<MemoryStream> open(SettingsHandlerKit::EventLoop& loop, std::shared_ptr<Link> link);

    void setUser(User* newUser) override { user = newUser; }
    bool isOpen() const override { return !isClosed; }
    void startReading() override { reading = true; }
    void stopReading() override { reading = false; }
    bool readNow() override;
    void write(const std::string& bytes) override;
    bool isWriting() const override { return !rest.empty(); }
    void endOutput() override;
    void close() override;

    bool canRead() const { return !isClosed && reading && !endTold && (!link->toHost.empty() || link->inputOver); }
    bool canWrite() const { return !isClosed && !rest.empty() && (link->roomLeft() > 0 || link->clientGone); }
    /// Gives the user some bytes, or the end.
    void read(Choices& choices);
    void writeRest();

    /// libuv has let go of the handle.
    void closed();

private:
    void give(std::size_t size);

    std::shared_ptr<Link> link;
    User* user = nullptr;
    std::string rest;
    bool reading = false;
    bool endTold = false;
    bool isClosed = false;
};

}  // namespace SettingsSimulation
