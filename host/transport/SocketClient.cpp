#include "transport/SocketClient.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include <sys/socket.h>

#include "transport/FrameInspector.h"
#include "transport/UnixSocketDoor.h"

namespace SettingsHost {

namespace {

/// A write on its way, with its share of the frame.
struct Write {
    uv_write_t request{};
    std::shared_ptr<const std::string> frame;
};

uv_buf_t bufferOf(const std::string& text, std::size_t from) {
    return uv_buf_init(const_cast<char*>(text.data() + from),  // NOLINT(cppcoreguidelines-pro-type-const-cast)
                       static_cast<unsigned>(text.size() - from));
}

/// A frame and the end of its line, without the first `sent` bytes of the two.
std::array<uv_buf_t, 2> restOf(const std::string& frame, std::size_t sent) {
    static char lineEnd = '\n';
    const std::size_t from = std::min(sent, frame.size());
    return {bufferOf(frame, from), uv_buf_init(&lineEnd, sent > frame.size() ? 0 : 1)};
}

}  // namespace

SocketClient::SocketClient(UnixSocketDoor& owningDoor, Origin origin)
    : door(&owningDoor), clientOrigin(origin), framer(maximumFrameSize) {}

void SocketClient::send(const std::shared_ptr<const std::string>& frame) {
    if (finishing || outputEnded || !isOpen()) {
        return;
    }
    if (uv_stream_get_write_queue_size(stream()) > maximumWaiting) {
        reason = Departure::TOO_SLOW;
        drop();
        return;
    }
    // What the kernel takes at once needs no queue, which costs more than the writing. Errors are for the queue.
    const std::size_t taken = frame->size() <= maximumFrameSize ? writeAtOnce(door->lineOf(frame)) : 0;
    if (taken <= frame->size()) {
        queue(frame, taken);
    }
}

/// Without libuv, which would use a slower call, and only while nothing waits there.
std::size_t SocketClient::writeAtOnce(const std::string& line) {
    uv_os_fd_t descriptor = -1;
    if (uv_stream_get_write_queue_size(stream()) > 0 || uv_fileno(generic(), &descriptor) != 0) {
        return 0;
    }
    const ssize_t taken = ::send(descriptor, line.data(), line.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    return static_cast<std::size_t>(std::max<ssize_t>(taken, 0));
}

void SocketClient::queue(const std::shared_ptr<const std::string>& frame, std::size_t sent) {
    auto write = std::make_unique<Write>();
    write->frame = frame;
    write->request.data = write.get();
    const auto rest = restOf(*frame, sent);
    const int result = uv_write(&write->request, stream(), rest.data(), rest.size(), [](uv_write_t* done, int status) {
        const std::unique_ptr<Write> finished(static_cast<Write*>(done->data));
        if (status != UV_ECANCELED) {
            ownerOf(done->handle).sent(status);
        }
    });
    if (result == 0) {
        write.release();  // NOLINT(bugprone-unused-return-value): libuv's until the callback
    } else {
        drop();
    }
}

void SocketClient::sent(int status) {
    if (status != 0) {
        // The client reads no more. What it asked for is still done.
        outputEnded = true;
        if (finishing) {
            closeHandle();
            return;
        }
    }
    if (waitsForReader && !isBehind()) {
        waitsForReader = false;
        pause();
        door->continueLater(shared());
    }
}

/// Its frames wait until it has read what waits for it. Until they fill a buffer they are still read, so that it can
/// send a series of requests before it reads the first answer.
void SocketClient::waitForReader() {
    waitsForReader = true;
    if (framer.size() > maximumFrameSize) {
        pause();
    }
}

/// Does more wait for the client than it may leave unread while it asks on?
bool SocketClient::isBehind() {
    return !outputEnded && uv_stream_get_write_queue_size(stream()) > maximumUnread;
}

void SocketClient::start() {
    readOn();
}

void SocketClient::readOn() {
    if (reading || inputEnded || finishing || !isOpen()) {
        return;
    }
    reading = true;
    uv_read_start(
        stream(),
        [](uv_handle_t* handle, std::size_t, uv_buf_t* buffer) {
            auto& bytes = ownerOf(handle).door->readBuffer->bytes;
            *buffer = uv_buf_init(bytes.data(), static_cast<unsigned>(bytes.size()));
        },
        [](uv_stream_t* handle, ssize_t count, const uv_buf_t* buffer) {
            ownerOf(handle).received(count, buffer->base);
        });
}

void SocketClient::pause() {
    if (reading) {
        reading = false;
        uv_read_stop(stream());
    }
}

void SocketClient::received(ssize_t count, const char* bytes) {
    if (count > 0) {
        framer.append(bytes, static_cast<std::size_t>(count));
    } else if (count < 0) {
        // Its end or an error: either way, what came before is still taken.
        pause();
        inputEnded = true;
    }
    takeFrames();
}

void SocketClient::takeFrames() {
    const auto self = shared();
    waitsForReader = false;
    const auto end = std::chrono::steady_clock::now() + UnixSocketDoor::longestTurn;
    for (std::size_t taken = 0; taken < UnixSocketDoor::framesPerTurn; ++taken) {
        // A turn that took all there was is over without another one.
        if (taken > 0 && framer.size() > 0 && std::chrono::steady_clock::now() >= end) {
            break;
        }
        if (finishing || !isOpen()) {
            return;
        }
        if (isBehind()) {
            waitForReader();
            return;
        }
        const auto frame = framer.next();
        if (!frame) {
            if (inputEnded) {
                finish();
            } else {
                readOn();
            }
            return;
        }
        if (frame->tooLarge) {
            door->events.tooLarge(self);
        } else {
            door->events.frame(self, frame->text);
        }
    }
    if (isOpen()) {
        pause();
        door->continueLater(self);
    }
}

void SocketClient::finish() {
    if (finishing || !isOpen()) {
        return;
    }
    finishing = true;
    pause();
    auto request = std::make_unique<uv_shutdown_t>();
    const int result = uv_shutdown(request.get(), stream(), [](uv_shutdown_t* done, int) {
        const std::unique_ptr<uv_shutdown_t> finished(done);
        ownerOf(done->handle).closeHandle();
    });
    if (result == 0) {
        request.release();  // NOLINT(bugprone-unused-return-value): libuv's until the callback
    } else {
        closeHandle();
    }
}

void SocketClient::drop() {
    closeHandle();
}

void SocketClient::closed() {
    if (door != nullptr) {
        door->remove(*this);
    }
}

}  // namespace SettingsHost
