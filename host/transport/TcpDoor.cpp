#include "transport/TcpDoor.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "transport/DoorError.h"
#include "transport/PassedSocket.h"
#include "transport/UvHandle.h"

namespace SettingsHost {

namespace {

constexpr int connectionsThatMayWait = 128;

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
        throw DoorError("'" + address + "' is no numeric address");
    }
    return endpoint;
}

Descriptor openSpare() {
    return Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

}  // namespace

/// Reports that connections wait.
class TcpDoor::Watch : public UvHandle<uv_poll_t, Watch> {
public:
    explicit Watch(TcpDoor& owningDoor) : door(&owningDoor) {}

    void start(uv_loop_t* loop, int listening, const std::shared_ptr<Watch>& self) {
        uv_poll_init(loop, get(), listening);
        opened(self);
        uv_poll_start(get(), UV_READABLE, [](uv_poll_t* poll, int, int) { ownerOf(poll).door->accept(); });
    }

private:
    TcpDoor* door;
};

TcpDoor::TcpDoor(const std::string& address, std::uint16_t port) : spare(openSpare()) {
    Endpoint endpoint = endpointOf(address, port);
    descriptor = Descriptor(::socket(endpoint.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int on = 1;
    // Lets a host that starts again have the port of the one before; never that of one which still listens.
    const bool listens = descriptor.get() >= 0 &&
                         ::setsockopt(descriptor.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)) == 0 &&
                         ::bind(descriptor.get(), endpoint.generic(), endpoint.size) == 0 &&
                         ::listen(descriptor.get(), connectionsThatMayWait) == 0;
    if (!listens) {
        throw DoorError("cannot listen at " + address + " port " + std::to_string(port) + ": " + std::strerror(errno));
    }
    readAddress();
}

TcpDoor::TcpDoor(Descriptor listening) : descriptor(std::move(listening)), spare(openSpare()) {
    checkPassedLoopbackSocket(descriptor.get());
    readAddress();
}

TcpDoor::~TcpDoor() {
    close();
}

void TcpDoor::readAddress() {
    Endpoint endpoint;
    endpoint.size = sizeof(endpoint.storage);
    ::getsockname(descriptor.get(), endpoint.generic(), &endpoint.size);
    std::array<char, NI_MAXHOST> host{};
    std::array<char, NI_MAXSERV> service{};
    if (::getnameinfo(endpoint.generic(), endpoint.size, host.data(), host.size(), service.data(), service.size(),
                      NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        throw DoorError("cannot read the address of a listening socket");
    }
    boundAddress = host.data();
    boundPort = static_cast<std::uint16_t>(std::stoul(service.data()));
}

void TcpDoor::start(EventLoop& loop, Taker taker) {
    take = std::move(taker);
    watch = std::make_shared<Watch>(*this);
    watch->start(loop.handle(), descriptor.get(), watch);
}

void TcpDoor::accept() {
    const int accepted = ::accept4(descriptor.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (accepted >= 0) {
        take(accepted);
    } else if (errno == EMFILE || errno == ENFILE) {
        turnAway();
    }
}

void TcpDoor::turnAway() {
    spare = Descriptor();
    Descriptor(::accept4(descriptor.get(), nullptr, nullptr, SOCK_CLOEXEC));
    spare = openSpare();
}

void TcpDoor::close() {
    if (watch) {
        watch->closeHandle();
    }
    descriptor = Descriptor();
    spare = Descriptor();
}

}  // namespace SettingsHost
