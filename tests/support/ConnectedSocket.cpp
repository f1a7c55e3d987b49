#include "support/ConnectedSocket.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace TestSupport {

namespace {

template <typename Address>
int connectedTo(int socket, const Address& address, const std::string& shown) {
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        const std::string reason = std::strerror(errno);
        ::close(socket);
        throw std::runtime_error("cannot connect to " + shown + ": " + reason);
    }
    return socket;
}

}  // namespace

int connectedUnixSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        throw std::runtime_error("socket path too long: " + path);
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return connectedTo(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), address, path);
}

int connectedTcpSocket(std::uint16_t port, int receiveBuffer) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (receiveBuffer > 0) {
        ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof(receiveBuffer));
    }
    return connectedTo(socket, address, "port " + std::to_string(port));
}

}  // namespace TestSupport
