#include "server/sockets/PassedSocket.h"

#include <cerrno>
#include <cstddef>
#include <cstring>

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "SettingsHandlerKit/ListenerError.h"

namespace SettingsHandlerKit {

namespace {

bool hasOption(int descriptor, int option, int wanted) {
    int value = 0;
    socklen_t size = sizeof(value);
    return ::getsockopt(descriptor, SOL_SOCKET, option, &value, &size) == 0 && value == wanted;
}

bool isListeningStream(int descriptor) {
    return hasOption(descriptor, SO_TYPE, SOCK_STREAM) && hasOption(descriptor, SO_ACCEPTCONN, 1);
}

template <typename Address>
socklen_t readAddress(int descriptor, Address& address) {
    socklen_t size = sizeof(address);
    if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        throw ListenerError(std::string("cannot read the address of a passed socket: ") + std::strerror(errno));
    }
    return size;
}

void adopt(int descriptor) {
    const int flags = ::fcntl(descriptor, F_GETFL);
    if (flags < 0 || ::fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) != 0 ||
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC) != 0) {
        throw ListenerError(std::string("cannot set the flags of a passed socket: ") + std::strerror(errno));
    }
}

bool isLoopback(const sockaddr_storage& address) {
    if (address.ss_family == AF_INET) {
        const auto& version4 = reinterpret_cast<const sockaddr_in&>(address);
        return (ntohl(version4.sin_addr.s_addr) >> 24U) == IN_LOOPBACKNET;
    }
    return IN6_IS_ADDR_LOOPBACK(&reinterpret_cast<const sockaddr_in6&>(address).sin6_addr);
}

}  // namespace

std::string checkPassedUnixSocket(int descriptor) {
    if (!hasOption(descriptor, SO_DOMAIN, AF_UNIX) || !isListeningStream(descriptor)) {
        throw ListenerError("the passed socket is not a listening Unix stream socket");
    }
    sockaddr_un address{};
    const socklen_t size = readAddress(descriptor, address);
    if (size <= offsetof(sockaddr_un, sun_path) || address.sun_path[0] == '\0') {
        throw ListenerError("the passed socket is abstract: abstract sockets have no access control");
    }
    adopt(descriptor);
    return std::string(address.sun_path, ::strnlen(address.sun_path, size - offsetof(sockaddr_un, sun_path)));
}

void checkPassedLoopbackSocket(int descriptor) {
    const bool isInternet = hasOption(descriptor, SO_DOMAIN, AF_INET) || hasOption(descriptor, SO_DOMAIN, AF_INET6);
    if (!isInternet || !isListeningStream(descriptor)) {
        throw ListenerError("the passed socket is not a listening TCP socket");
    }
    sockaddr_storage address{};
    readAddress(descriptor, address);
    if (!isLoopback(address)) {
        throw ListenerError("the passed socket does not listen at a loopback address");
    }
    adopt(descriptor);
}

}  // namespace SettingsHandlerKit
