#include "RelayPeer.h"

#include <stdexcept>

#include <sys/socket.h>

#include "SocketLines.h"
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

}  // namespace

RelayPeer::Pair RelayPeer::connectedPair() {
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        throw std::runtime_error("cannot make a pair of sockets");
    }
    return {TestSupport::PlainSocket(ends[0]), TestSupport::PlainSocket(ends[1])};
}

RelayPeer::RelayPeer()
    : relay([this](int /*socket*/) {
          SocketLines lines(setting.first.get());
          for (;;) {
              send(observing.first.get(), lines.next());
          }
      }) {}

std::unique_ptr<Setter> RelayPeer::connect() const {
    return std::make_unique<RelaySetter>(setting.second.get());
}

void RelayPeer::observe(const Report& report) const {
    SocketLines lines(observing.second.get());
    report.ready();
    for (;;) {
        const std::string& value = lines.next();
        report.seen(std::chrono::steady_clock::now(), value);
    }
}

}  // namespace Benchmarks
