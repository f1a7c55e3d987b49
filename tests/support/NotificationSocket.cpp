#include "support/NotificationSocket.h"

#include <array>
#include <cstring>
#include <ctime>

#include <poll.h>
#include <sys/socket.h>

namespace TestSupport {

namespace {

/// The kernel's time stamp of the message; 0 without one.
std::chrono::nanoseconds arrivalOf(msghdr& message) {
    for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level == SOL_SOCKET && part->cmsg_type == SCM_TIMESTAMPNS) {
            timespec time{};
            std::memcpy(&time, CMSG_DATA(part), sizeof(time));
            return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
        }
    }
    return {};
}

}  // namespace

NotificationSocket::NotificationSocket(const std::string& path) : socket(boundUnixSocket(path, SOCK_DGRAM)) {
    const int on = 1;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_TIMESTAMPNS, &on, sizeof(on));
}

std::optional<std::string> NotificationSocket::receive(std::chrono::milliseconds deadline) {
    pollfd waiting{socket.get(), POLLIN, 0};
    if (::poll(&waiting, 1, static_cast<int>(deadline.count())) <= 0) {
        return std::nullopt;
    }
    std::array<char, 65536> buffer{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(timespec))> control{};
    iovec place{buffer.data(), buffer.size()};
    msghdr message{};
    message.msg_iov = &place;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t size = ::recvmsg(socket.get(), &message, 0);
    if (size < 0) {
        return std::nullopt;
    }
    arrival = arrivalOf(message);
    return std::string(buffer.data(), static_cast<std::size_t>(size));
}

}  // namespace TestSupport
