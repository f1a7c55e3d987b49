#include <cstdio>
#include <cstdlib>
#include <vector>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include "support/ListeningSocket.h"

/// The floor under an event for everybody: takes a line from the first client and sends its bytes to each client with
/// one `send`, and nothing else.
namespace {

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
    const bool isUnix = argumentCount > 2;
    const auto listener =
        isUnix ? TestSupport::listeningUnixSocket(arguments[2]) : TestSupport::listeningTcpSocket("127.0.0.1");
    std::printf("%d\n", isUnix ? 0 : listener.port());
    std::fflush(stdout);
    std::vector<int> clients(static_cast<std::size_t>(std::atoi(arguments[1])));
    for (int& client : clients) {
        client = ::accept(listener.get(), nullptr, nullptr);
        const int on = 1;
        ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    }
    serve(clients);
    return 0;
}
