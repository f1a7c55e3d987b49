#include <stdexcept>
#include <utility>

#include <sys/socket.h>

#include "Peer.h"
#include "SocketLines.h"
#include "Worker.h"
#include "support/ListeningSocket.h"
#include "support/SendAll.h"

namespace Benchmarks {

namespace {

void send(int socket, const std::string& line) {
    if (!TestSupport::sendAll(socket, line + "\n")) {
        throw std::runtime_error("a socket was closed");
    }
}

class RelaySetter : public Setter {
public:
    explicit RelaySetter(int connectedSocket) : socket(connectedSocket) {}

    void set(const std::string& value) override { send(socket, value); }

private:
    int socket;
};

using Pair = std::pair<TestSupport::PlainSocket, TestSupport::PlainSocket>;

Pair connectedPair() {
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        throw std::runtime_error("cannot make a pair of sockets");
    }
    return {TestSupport::PlainSocket(ends[0]), TestSupport::PlainSocket(ends[1])};
}

class RelayPeer : public Peer {
public:
    std::unique_ptr<Setter> connect() const override { return std::make_unique<RelaySetter>(setting.second.get()); }

    void observe(const Report& report) const override {
        SocketLines lines(observing.second.get());
        report.ready();
        for (;;) {
            const std::string& value = lines.next();
            report.seen(std::chrono::steady_clock::now(), value);
        }
    }

private:
    /// First the relay's end.
    Pair setting = connectedPair();
    Pair observing = connectedPair();
    Worker relay{[this](int /*socket*/) {
        SocketLines lines(setting.first.get());
        for (;;) {
            send(observing.first.get(), lines.next());
        }
    }};
};

}  // namespace

std::unique_ptr<Peer> relayPeer() {
    return std::make_unique<RelayPeer>();
}

}  // namespace Benchmarks
