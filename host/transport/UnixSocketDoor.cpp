#include "transport/UnixSocketDoor.h"

#include <utility>

#include <uv.h>

#include "transport/SocketClient.h"
#include "transport/UvHandle.h"

namespace SettingsHost {

namespace {

constexpr std::size_t readSize = 65536;

}  // namespace

/// The listening end.
class UnixSocketDoor::Listener : public UvHandle<uv_pipe_t, Listener> {
public:
    explicit Listener(UnixSocketDoor& owningDoor) : door(&owningDoor) {}

    void listen(uv_loop_t* eventLoop, int descriptor, const std::shared_ptr<Listener>& self) {
        uv_pipe_init(eventLoop, get(), 0);
        opened(self);
        int result = uv_pipe_open(get(), descriptor);
        if (result == 0) {
            result = uv_listen(stream(), 128, [](uv_stream_t* arrived, int status) {
                if (status == 0) {
                    ownerOf(arrived).door->accept();
                }
            });
        }
        if (result != 0) {
            closeHandle();
            throw DoorError(std::string("cannot listen: ") + uv_strerror(result));
        }
    }

private:
    UnixSocketDoor* door;
};

/// Runs once a round of the event loop while clients have frames left.
class UnixSocketDoor::Turns : public UvHandle<uv_idle_t, Turns> {
public:
    explicit Turns(UnixSocketDoor& owningDoor) : door(&owningDoor) {}

    void start() {
        uv_idle_start(get(), [](uv_idle_t* idle) { ownerOf(idle).door->takeTurn(); });
    }

private:
    UnixSocketDoor* door;
};

UnixSocketDoor::UnixSocketDoor(EventLoop& eventLoop, SocketPlace place, Origin originOfClients, DoorEvents doorEvents)
    : loop(eventLoop),
      origin(originOfClients),
      events(std::move(doorEvents)),
      file(std::move(place)),
      readBuffer(readSize) {
    turns = std::make_shared<Turns>(*this);
    uv_idle_init(loop.handle(), turns->get());
    turns->opened(turns);
    listener = std::make_shared<Listener>(*this);
    listener->listen(loop.handle(), file.takeDescriptor(), listener);
}

UnixSocketDoor::~UnixSocketDoor() {
    close();
    closeNow();
    for (const auto& entry : clients) {
        entry.second->detach();
    }
}

void UnixSocketDoor::accept() {
    auto client = std::make_shared<SocketClient>(*this, origin);
    uv_pipe_init(loop.handle(), client->get(), 0);
    client->opened(client);
    if (uv_accept(listener->stream(), client->stream()) != 0) {
        client->closeHandle();
        return;
    }
    clients.emplace(client.get(), client);
    events.arrived(client);
    client->start();
}

void UnixSocketDoor::continueLater(const std::shared_ptr<SocketClient>& client) {
    if (closing) {
        return;
    }
    if (waiting.empty()) {
        turns->start();
    }
    waiting.push_back(client);
}

void UnixSocketDoor::takeTurn() {
    std::vector<std::shared_ptr<SocketClient>> now;
    now.swap(waiting);
    uv_idle_stop(turns->get());
    for (const auto& client : now) {
        client->takeFrames();
    }
}

void UnixSocketDoor::remove(SocketClient& client) {
    const auto entry = clients.find(&client);
    if (entry != clients.end()) {
        const std::shared_ptr<SocketClient> gone = entry->second;
        clients.erase(entry);
        events.left(gone, gone->departure());
    }
}

void UnixSocketDoor::close() {
    if (closing) {
        return;
    }
    closing = true;
    file.remove();
    listener->closeHandle();
    turns->closeHandle();
    waiting.clear();
    for (const auto& entry : clients) {
        entry.second->finish();
    }
}

void UnixSocketDoor::closeNow() {
    for (const auto& entry : clients) {
        entry.second->drop();
    }
}

}  // namespace SettingsHost
