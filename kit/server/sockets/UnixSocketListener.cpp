#include "server/sockets/UnixSocketListener.h"

#include <utility>

#include <sys/socket.h>

#include "Wire/FrameInspector.h"
#include "Wire/Frames.h"
#include "Wire/RefusalCode.h"
#include "server/sockets/LineFramer.h"
#include "server/sockets/ListenerLimits.h"
#include "server/sockets/SocketStream.h"
#include "server/sockets/StreamClient.h"

namespace SettingsHandlerKit {

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
      turns(loop) {
    if (file) {
        acceptor.emplace(Descriptor(file->takeDescriptor()));
        acceptor->start(
            loop, [this](int descriptor) { accept(descriptor); }, [this](int descriptor) { refuse(descriptor); });
    }
}

UnixSocketListener::~UnixSocketListener() {
    close();
    closeNow();
    for (const auto& entry : clients) {
        entry.second->detach();
    }
}

void UnixSocketListener::accept(int descriptor) {
    Descriptor socket(descriptor);
    if (clients.size() >= maximumClients) {
        refuse(descriptor);
        return;
    }
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &kernelBuffer, sizeof(kernelBuffer));
    if (const auto stream = SocketStream::open(loop, std::move(socket))) {
        serve(stream);
    }
}

void UnixSocketListener::serve(const std::shared_ptr<ByteStream>& stream) {
    auto client = std::make_shared<StreamClient>(
        stream, std::make_shared<LineFramer>(Wire::maximumFrameSize),
        StreamClient::Place{clientListener, turns, backlog, origin, ListenerKind::UNIX_SOCKET,
                            [this](StreamClient& gone) { remove(gone); }});
    clients.emplace(client.get(), client);
    client->start();
}

void UnixSocketListener::refuse(int descriptor) {
    static const std::string refusal =
        Wire::refusalFrame(Wire::RefusalCode::tooManyClients, "the host has reached its limit of clients") + "\n";
    // Nothing was sent on this connection yet, so the kernel takes all of it.
    ::send(descriptor, refusal.data(), refusal.size(), MSG_NOSIGNAL);
    clientListener.refused(origin);
}

void UnixSocketListener::remove(StreamClient& client) {
    const auto entry = clients.find(&client);
    const std::shared_ptr<StreamClient> gone = entry->second;
    clients.erase(entry);
    clientListener.disconnected(gone, gone->disconnectReason());
}

void UnixSocketListener::close() {
    if (closing) {
        return;
    }
    closing = true;
    if (file) {
        file->remove();
        acceptor->close();
    }
    turns.close();
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
