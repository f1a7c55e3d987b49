#include "server/sockets/UnixSocketListener.h"

#include <utility>

#include <sys/socket.h>
#include <unistd.h>
#include <uv.h>

#include "Wire/Frames.h"
#include "Wire/RefusalCode.h"
#include "server/loop/UvHandle.h"
#include "server/sockets/ListenerLimits.h"
#include "server/sockets/SocketClient.h"

namespace SettingsHandlerKit {

/// Runs once a round of the event loop while clients have frames left.
class UnixSocketListener::Turns : public UvHandle<uv_idle_t, Turns> {
public:
    explicit Turns(UnixSocketListener& owningListener) : listener(&owningListener) {}

    void start() {
        uv_idle_start(get(), [](uv_idle_t* idle) { ownerOf(idle).listener->takeTurn(); });
    }

private:
    UnixSocketListener* listener;
};

UnixSocketListener::UnixSocketListener(EventLoop& eventLoop, SocketPlace place, Origin originOfClients,
                                       ClientListener& observer, std::shared_ptr<Backlog> backlogOfAll)
    : UnixSocketListener(eventLoop, std::make_unique<SocketFile>(std::move(place)), originOfClients, observer,
                         std::move(backlogOfAll)) {}

UnixSocketListener::UnixSocketListener(EventLoop& eventLoop, std::unique_ptr<SocketFile> socket, Origin originOfClients,
                                       ClientListener& observer, std::shared_ptr<Backlog> backlogOfAll)
    : loop(eventLoop),
      origin(originOfClients),
      clientListener(observer),
      backlog(std::move(backlogOfAll)),
      file(std::move(socket)),
      acceptor(Descriptor(file->takeDescriptor())),
      readBuffer(std::make_unique<ReadBuffer>()) {
    turns = std::make_shared<Turns>(*this);
    uv_idle_init(loop.handle(), turns->get());
    turns->opened(turns);
    acceptor.start(
        loop, [this](int descriptor) { accept(descriptor); }, [this](int descriptor) { refuse(descriptor); });
}

UnixSocketListener::~UnixSocketListener() {
    close();
    closeNow();
    for (const auto& entry : clients) {
        entry.second->detach();
    }
}

void UnixSocketListener::accept(int descriptor) {
    if (clients.size() >= maximumClients) {
        refuse(descriptor);
        ::close(descriptor);
        return;
    }
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &kernelBuffer, sizeof(kernelBuffer));
    auto client = std::make_shared<SocketClient>(*this, origin);
    uv_pipe_init(loop.handle(), client->get(), 0);
    client->opened(client);
    if (uv_pipe_open(client->get(), descriptor) != 0) {
        ::close(descriptor);
        client->closeHandle();
        return;
    }
    clients.emplace(client.get(), client);
    clientListener.connected(client);
    client->start();
}

void UnixSocketListener::refuse(int descriptor) {
    static const std::string refusal =
        Wire::refusalFrame(Wire::RefusalCode::tooManyClients, "the host has reached its limit of clients") + "\n";
    // Nothing was sent on this connection yet, so the kernel takes all of it.
    ::send(descriptor, refusal.data(), refusal.size(), MSG_NOSIGNAL);
    clientListener.refused(origin);
}

void UnixSocketListener::continueLater(const std::shared_ptr<SocketClient>& client) {
    if (closing) {
        return;
    }
    if (waiting.empty()) {
        turns->start();
    }
    waiting.push_back(client);
}

void UnixSocketListener::takeTurn() {
    std::vector<std::shared_ptr<SocketClient>> now;
    now.swap(waiting);
    uv_idle_stop(turns->get());
    for (const auto& client : now) {
        client->takeFrames();
    }
}

void UnixSocketListener::remove(SocketClient& client) {
    const auto entry = clients.find(&client);
    if (entry != clients.end()) {
        const std::shared_ptr<SocketClient> gone = entry->second;
        clients.erase(entry);
        clientListener.disconnected(gone, gone->disconnectReason());
    }
}

const std::string& UnixSocketListener::lineOf(const std::shared_ptr<const std::string>& frame) {
    const bool isLast = !lastFrame.owner_before(frame) && !frame.owner_before(lastFrame);
    if (!isLast) {
        lastFrame = frame;
        lastLine.assign(*frame).push_back('\n');
    }
    return lastLine;
}

void UnixSocketListener::close() {
    if (closing) {
        return;
    }
    closing = true;
    file->remove();
    acceptor.close();
    turns->closeHandle();
    waiting.clear();
    for (const auto& entry : clients) {
        entry.second->finish();
    }
}

void UnixSocketListener::closeNow() {
    for (const auto& entry : clients) {
        entry.second->drop();
    }
}

}  // namespace SettingsHandlerKit
