#include "server/sockets/TcpListener.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "SettingsHandlerKit/ListenerError.h"
#include "server/sockets/PassedSocket.h"

namespace SettingsHandlerKit {

namespace {

/// A turn accepts enough that a burst of connections does not fill the kernel's queue, and ends early enough for the
/// clients that are connected already.
constexpr std::chrono::microseconds longestTurnOfAccepting{300};

struct Endpoint {
    sockaddr_storage storage{};
    socklen_t size = 0;

    sockaddr* generic() { return reinterpret_cast<sockaddr*>(&storage); }
};

Endpoint endpointOf(const std::string& address, std::uint16_t port) {
    Endpoint endpoint;
    auto* const version4 = reinterpret_cast<sockaddr_in*>(&endpoint.storage);
    auto* const version6 = reinterpret_cast<sockaddr_in6*>(&endpoint.storage);
    if (::inet_pton(AF_INET, address.c_str(), &version4->sin_addr) == 1) {
        version4->sin_family = AF_INET;
        version4->sin_port = htons(port);
        endpoint.size = sizeof(sockaddr_in);
    } else if (::inet_pton(AF_INET6, address.c_str(), &version6->sin6_addr) == 1) {
        version6->sin6_family = AF_INET6;
        version6->sin6_port = htons(port);
        endpoint.size = sizeof(sockaddr_in6);
    } else {
        throw ListenerError("'" + address + "' is not a numeric address");
    }
    return endpoint;
}

Descriptor listenAt(const std::string& address, std::uint16_t port) {
    Endpoint endpoint = endpointOf(address, port);
    Descriptor listening(::socket(endpoint.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int on = 1;
    // Lets a host that starts again have its port; never one on which another process still listens.
    const bool listens =
        listening.get() >= 0 && ::setsockopt(listening.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) == 0 &&
        ::bind(listening.get(), endpoint.generic(), endpoint.size) == 0 && ::listen(listening.get(), SOMAXCONN) == 0;
    if (!listens) {
        throw ListenerError("cannot listen at " + address + " port " + std::to_string(port) + ": " +
                            std::strerror(errno));
    }
    return listening;
}

/// Options that reduce latency and make the listener hard to block; it works without them. Also for passed sockets.
void tune(int listening) {
    const int on = 1;
    const int oneSecond = 1;
    // Inherited by connections. Otherwise the second of two frames waits for the delayed acknowledgement of the first.
    ::setsockopt(listening, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    // The client sends first. A connection that sends nothing stays with the kernel for a second; any other has data
    // when it is accepted.
    ::setsockopt(listening, IPPROTO_TCP, TCP_DEFER_ACCEPT, &oneSecond, sizeof(oneSecond));
    // A burst of connections fills a short queue, and then every new connection waits a second for its next try.
    ::listen(listening, SOMAXCONN);
}

}  // namespace

TcpListener::TcpListener(const std::string& address, std::uint16_t port) {
    acceptFrom(listenAt(address, port));
}

TcpListener::TcpListener(Descriptor listening) {
    checkPassedLoopbackSocket(listening.get());
    acceptFrom(std::move(listening));
}

void TcpListener::acceptFrom(Descriptor listening) {
    Endpoint endpoint;
    endpoint.size = sizeof(endpoint.storage);
    ::getsockname(listening.get(), endpoint.generic(), &endpoint.size);
    std::array<char, NI_MAXHOST> host{};
    std::array<char, NI_MAXSERV> service{};
    if (::getnameinfo(endpoint.generic(), endpoint.size, host.data(), host.size(), service.data(), service.size(),
                      NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        throw ListenerError("cannot read the address of a listening socket");
    }
    boundAddress = host.data();
    boundPort = static_cast<std::uint16_t>(std::stoul(service.data()));
    tune(listening.get());
    acceptor.emplace(std::move(listening), longestTurnOfAccepting);
}

void TcpListener::start(EventLoop& loop, Acceptor::OnConnection taker, Acceptor::OnRefused refuser) {
    acceptor->start(loop, std::move(taker), std::move(refuser));
}

void TcpListener::close() {
    acceptor->close();
}

}  // namespace SettingsHandlerKit
