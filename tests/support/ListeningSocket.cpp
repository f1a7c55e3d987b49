#include "support/ListeningSocket.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace TestSupport {

namespace {

void require(bool worked) {
    if (!worked) {
        throw std::runtime_error(std::string("cannot create a socket: ") + std::strerror(errno));
    }
}

}  // namespace

PlainSocket::~PlainSocket() {
    if (number >= 0) {
        ::close(number);
    }
}

PlainSocket::PlainSocket(PlainSocket&& other) noexcept : number(std::exchange(other.number, -1)) {}

std::uint16_t PlainSocket::port() const {
    sockaddr_in6 address{};
    socklen_t size = sizeof(address);
    require(::getsockname(number, reinterpret_cast<sockaddr*>(&address), &size) == 0);
    // The port has the same offset in both versions.
    return ntohs(address.sin6_port);
}

PlainSocket boundUnixSocket(const std::string& path, int kind) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    require(path.size() < sizeof(address.sun_path));
    std::memcpy(address.sun_path, path.data(), path.size());
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    PlainSocket made(::socket(AF_UNIX, kind | SOCK_CLOEXEC, 0));
    require(::bind(made.get(), reinterpret_cast<const sockaddr*>(&address), size) == 0);
    return made;
}

PlainSocket listeningUnixSocket(const std::string& path) {
    PlainSocket made = boundUnixSocket(path, SOCK_STREAM);
    require(::listen(made.get(), SOMAXCONN) == 0);
    return made;
}

PlainSocket listeningTcpSocket(const std::string& address) {
    sockaddr_in version4{};
    sockaddr_in6 version6{};
    const bool isVersion4 = ::inet_pton(AF_INET, address.c_str(), &version4.sin_addr) == 1;
    version4.sin_family = AF_INET;
    version6.sin6_family = AF_INET6;
    require(isVersion4 || ::inet_pton(AF_INET6, address.c_str(), &version6.sin6_addr) == 1);
    PlainSocket made(::socket(isVersion4 ? AF_INET : AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const auto* const generic =
        isVersion4 ? reinterpret_cast<const sockaddr*>(&version4) : reinterpret_cast<const sockaddr*>(&version6);
    require(::bind(made.get(), generic, isVersion4 ? sizeof(version4) : sizeof(version6)) == 0);
    require(::listen(made.get(), SOMAXCONN) == 0);
    return made;
}

}  // namespace TestSupport
