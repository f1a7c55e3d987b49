#include "clients/support/Peer.h"

#include <chrono>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "support/ChildProcess.h"
#include "support/SendAll.h"

namespace ClientTests {

std::string Peer::receiveLine() {
    const auto line = reader.readLine();
    if (!line) {
        throw std::runtime_error("the client sent no further line");
    }
    return *line;
}

bool Peer::send(const std::string& bytes) const {
    return TestSupport::sendAll(socket, bytes);
}

void Peer::waitUntilRead() const {
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
    for (int waiting = 1; waiting > 0;) {
        if (::ioctl(socket, SIOCOUTQ, &waiting) != 0 || std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("the client does not read");
        }
        ::usleep(1000);
    }
}

void Peer::close() {
    if (socket >= 0) {
        ::close(socket);
        socket = -1;
    }
}

ListeningSocket::ListeningSocket(const std::string& path, int backlog)
    : socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    if (::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        ::listen(socket, backlog) != 0) {
        throw std::runtime_error("cannot listen at " + path);
    }
}

ListeningSocket::~ListeningSocket() {
    ::close(socket);
}

Peer ListeningSocket::accept() const {
    pollfd wanted{socket, POLLIN, 0};
    constexpr auto timeout = std::chrono::duration_cast<std::chrono::milliseconds>(TestSupport::waitTimeout);
    if (::poll(&wanted, 1, static_cast<int>(timeout.count())) != 1) {
        throw std::runtime_error("no client connected");
    }
    return Peer(::accept4(socket, nullptr, nullptr, SOCK_CLOEXEC));
}

}  // namespace ClientTests
