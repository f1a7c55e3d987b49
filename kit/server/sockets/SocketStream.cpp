#include "server/sockets/SocketStream.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <sys/socket.h>

namespace SettingsHandlerKit {

namespace {

constexpr std::size_t mostReadAtOnce = 65536;

bool isTemporary(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

}  // namespace

std::shared_ptr<ByteStream> SocketStream::open(EventLoop& loop, Descriptor socket) {
    auto stream = std::make_shared<SocketStream>();
    if (uv_poll_init(loop.handle(), stream->get(), socket.get()) != 0) {
        return nullptr;
    }
    stream->socket = std::move(socket);
    stream->opened(stream);
    return stream;
}

void SocketStream::watch() {
    const int events = (reading && !inputOver ? UV_READABLE : 0) | (isWriting() ? UV_WRITABLE : 0);
    if (!isOpen()) {
        return;
    }
    if (events == 0) {
        uv_poll_stop(get());
        return;
    }
    uv_poll_start(get(), events, [](uv_poll_t* poll, int status, int happened) {
        // A connection that is lost is reported as an error, and not watched any more.
        const bool isLost = status != 0;
        ownerOf(poll).ready(isLost || (happened & UV_READABLE) != 0, isLost || (happened & UV_WRITABLE) != 0);
    });
}

void SocketStream::ready(bool isReadable, bool isWritable) {
    const auto self = shared();
    if (isWritable && isWriting()) {
        sendRest();
    }
    if (isReadable && reading && isOpen()) {
        read();
    }
    if (isOpen() && uv_is_active(generic()) == 0) {
        watch();
    }
}

bool SocketStream::read() {
    // Not initialised: a read does not touch more memory than it fills.
    std::array<char, mostReadAtOnce> bytes;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    const std::size_t room = user == nullptr ? bytes.size() : std::min(bytes.size(), user->room());
    const ssize_t count = ::recv(socket.get(), bytes.data(), room, MSG_DONTWAIT);
    if (count < 0 && isTemporary(errno)) {
        return false;
    }
    if (count <= 0) {
        inputOver = true;
        watch();
    }
    if (user != nullptr) {
        count > 0 ? user->received(bytes.data(), static_cast<std::size_t>(count)) : user->inputEnded();
    }
    return true;
}

bool SocketStream::readNow() {
    const auto self = shared();
    return isOpen() && reading && !inputOver && read();
}

void SocketStream::startReading() {
    if (!std::exchange(reading, true)) {
        watch();
    }
}

void SocketStream::stopReading() {
    if (std::exchange(reading, false)) {
        watch();
    }
}

void SocketStream::write(const std::string& bytes) {
    if (!isOpen()) {
        return;
    }
    const ssize_t taken = ::send(socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    const auto sent = static_cast<std::size_t>(std::max<ssize_t>(taken, 0));
    if (sent < bytes.size()) {
        // Errors show when the rest is sent, from the event loop.
        rest = bytes.substr(sent);
        sentOfRest = 0;
        watch();
    }
}

void SocketStream::sendRest() {
    const ssize_t taken =
        ::send(socket.get(), rest.data() + sentOfRest, rest.size() - sentOfRest, MSG_DONTWAIT | MSG_NOSIGNAL);
    const bool isLost = taken < 0 && !isTemporary(errno);
    sentOfRest += static_cast<std::size_t>(std::max<ssize_t>(taken, 0));
    if (!isLost && sentOfRest < rest.size()) {
        return;
    }
    std::exchange(rest, {});
    watch();
    if (user != nullptr) {
        user->written(!isLost);
    }
}

void SocketStream::endOutput() {
    if (isOpen()) {
        ::shutdown(socket.get(), SHUT_WR);
    }
}

void SocketStream::close() {
    if (isOpen()) {
        std::exchange(rest, {});
        closeHandle();
        socket = Descriptor();
    }
}

void SocketStream::closed() {
    if (user != nullptr) {
        std::exchange(user, nullptr)->closed();
    }
}

}  // namespace SettingsHandlerKit
