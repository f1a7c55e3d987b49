#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// The floor under an event for everybody: takes a line from the first client and sends its bytes to each client with
/// one `send`, and nothing else.
namespace {

template <typename Address>
bool listenAt(int listener, const Address& address) {
    return ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 &&
           ::listen(listener, SOMAXCONN) == 0;
}

int listenAtUnixSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    return listenAt(listener, address) ? listener : -1;
}

int listenAtPort() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    return listenAt(listener, address) ? listener : -1;
}

int portOf(int listener) {
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

void serve(const std::vector<int>& clients) {
    std::vector<char> buffer(65536);
    for (;;) {
        const ssize_t count = ::recv(clients.front(), buffer.data(), buffer.size(), 0);
        if (count <= 0) {
            return;
        }
        for (const int client : clients) {
            if (::send(client, buffer.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL) != count) {
                return;
            }
        }
    }
}

}  // namespace

/// Arguments: how many clients to wait for, and the path of a Unix socket, or nothing for a TCP port, which it prints.
int main(int argumentCount, char** arguments) {
    if (argumentCount < 2) {
        std::fprintf(stderr, "usage: fan-out-floor CLIENTS [SOCKET]\n");
        return 2;
    }
    const int listener = argumentCount > 2 ? listenAtUnixSocket(arguments[2]) : listenAtPort();
    if (listener < 0) {
        std::perror("cannot listen");
        return 1;
    }
    std::printf("%d\n", argumentCount > 2 ? 0 : portOf(listener));
    std::fflush(stdout);
    std::vector<int> clients(static_cast<std::size_t>(std::atoi(arguments[1])));
    for (int& client : clients) {
        client = ::accept(listener, nullptr, nullptr);
        const int on = 1;
        ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    }
    serve(clients);
    return 0;
}
