#include "support/NotificationSocket.h"

#include <array>

#include <poll.h>
#include <sys/socket.h>

namespace TestSupport {

NotificationSocket::NotificationSocket(const std::string& path) : socket(boundUnixSocket(path, SOCK_DGRAM)) {}

std::optional<std::string> NotificationSocket::receive(std::chrono::milliseconds deadline) {
    pollfd waiting{socket.get(), POLLIN, 0};
    if (::poll(&waiting, 1, static_cast<int>(deadline.count())) <= 0) {
        return std::nullopt;
    }
    std::array<char, 65536> buffer{};
    const ssize_t size = ::recv(socket.get(), buffer.data(), buffer.size(), 0);
    return size < 0 ? std::nullopt
                    : std::optional<std::string>(std::string(buffer.data(), static_cast<std::size_t>(size)));
}

}  // namespace TestSupport
