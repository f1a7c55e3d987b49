#include "server/sockets/SocketClient.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include <sys/socket.h>

#include "Wire/FrameInspector.h"
#include "server/sockets/UnixSocketListener.h"

namespace SettingsHandlerKit {

namespace {

/// As many frames as libuv writes with one call.
constexpr std::size_t framesAtOnce = 16;

uv_buf_t bufferOf(const std::string& text, std::size_t from) {
    return uv_buf_init(const_cast<char*>(text.data() + from),  // NOLINT(cppcoreguidelines-pro-type-const-cast)
                       static_cast<unsigned>(text.size() - from));
}

}  // namespace

SocketClient::SocketClient(UnixSocketListener& owningListener, Origin origin)
    : listener(&owningListener),
      clientOrigin(origin),
      framer(Wire::maximumFrameSize),
      backlog(owningListener.backlog, [this] { drop(); }) {}

void SocketClient::send(const std::shared_ptr<const std::string>& frame) {
    if (backlog.isFinishing() || outputEnded || !isOpen()) {
        return;
    }
    if (backlog.empty()) {
        // What the kernel takes at once needs no queue, which costs more than the writing. Errors are for the queue.
        sentOfFirst = frame->size() <= Wire::maximumFrameSize ? writeAtOnce(listener->lineOf(frame)) : 0;
        if (sentOfFirst > frame->size()) {
            return;
        }
    }
    backlog.push(frame);
    writeOn();
}

/// Without libuv, which would use a slower call.
std::size_t SocketClient::writeAtOnce(const std::string& line) {
    uv_os_fd_t descriptor = -1;
    if (uv_fileno(generic(), &descriptor) != 0) {
        return 0;
    }
    const ssize_t taken = ::send(descriptor, line.data(), line.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    return static_cast<std::size_t>(std::max<ssize_t>(taken, 0));
}

void SocketClient::writeOn() {
    if (framesOnTheirWay > 0 || backlog.empty() || !isOpen()) {
        return;
    }
    static char lineEnd = '\n';
    std::array<uv_buf_t, 2 * framesAtOnce> parts;
    framesOnTheirWay = std::min(framesAtOnce, backlog.count());
    for (std::size_t place = 0; place < framesOnTheirWay; ++place) {
        const std::string& frame = *backlog[place];
        parts[2 * place] = bufferOf(frame, place == 0 ? sentOfFirst : 0);
        parts[2 * place + 1] = uv_buf_init(&lineEnd, 1);
    }
    const auto count = static_cast<unsigned>(2 * framesOnTheirWay);
    const int result = uv_write(&write, stream(), parts.data(), count, [](uv_write_t* done, int status) {
        if (status != UV_ECANCELED) {
            ownerOf(done->handle).written(status);
        }
    });
    if (result != 0) {
        drop();
    }
}

void SocketClient::written(int status) {
    if (!isOpen()) {
        return;
    }
    for (; framesOnTheirWay > 0 && !backlog.empty(); --framesOnTheirWay) {
        backlog.pop();
    }
    framesOnTheirWay = 0;
    sentOfFirst = 0;
    if (status != 0) {
        // The client reads no more. The requests that it sent are still handled.
        outputEnded = true;
        backlog.clear();
        countInput();
    }
    if (backlog.isFinishing() && backlog.empty()) {
        shutDown();
        return;
    }
    writeOn();
    if (backlog.resumeInput()) {
        pause();
        listener->continueLater(shared());
    }
}

/// A client whose frames wait may send on until they fill a buffer: a series of requests before it reads the first
/// reply.
void SocketClient::pauseWhenFull() {
    if (framer.size() > Wire::maximumFrameSize) {
        pause();
    }
}

void SocketClient::start() {
    readOn();
}

void SocketClient::readOn() {
    if (reading || inputEnded || backlog.isFinishing() || !isOpen()) {
        return;
    }
    reading = true;
    uv_read_start(
        stream(),
        [](uv_handle_t* handle, std::size_t, uv_buf_t* buffer) {
            SocketClient& client = ownerOf(handle);
            auto& bytes = client.listener->readBuffer->bytes;
            *buffer = uv_buf_init(bytes.data(), static_cast<unsigned>(std::min(bytes.size(), client.framer.room())));
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
        // End of file or an error: frames that came before are still taken.
        pause();
        inputEnded = true;
    }
    takeFrames();
}

void SocketClient::countInput() {
    backlog.setInput(isOpen() ? framer.memory() : 0);
}

void SocketClient::takeFrames() {
    const auto self = shared();
    takeTurn(self);
    countInput();
}

void SocketClient::takeTurn(const std::shared_ptr<SocketClient>& self) {
    const auto end = std::chrono::steady_clock::now() + UnixSocketListener::longestTurn;
    for (std::size_t taken = 0; taken < UnixSocketListener::framesPerTurn; ++taken) {
        // A turn that took all frames needs no further one.
        if (taken > 0 && framer.size() > 0 && std::chrono::steady_clock::now() >= end) {
            break;
        }
        if (backlog.isFinishing() || !isOpen()) {
            return;
        }
        if (backlog.pauseInput()) {
            pauseWhenFull();
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
            listener->clientListener.oversized(self);
        } else {
            listener->clientListener.received(self, frame->text);
        }
    }
    if (isOpen()) {
        pause();
        listener->continueLater(self);
    }
}

void SocketClient::finish() {
    if (backlog.isFinishing() || !isOpen()) {
        return;
    }
    backlog.finish();
    pause();
    if (backlog.empty()) {
        shutDown();
    }
}

/// Ends the output; the client still reads what the kernel has of it.
void SocketClient::shutDown() {
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
    framesOnTheirWay = 0;
    backlog.clear();
    std::exchange(framer, LineFramer(Wire::maximumFrameSize));
}

void SocketClient::closed() {
    if (listener != nullptr) {
        listener->remove(*this);
    }
}

}  // namespace SettingsHandlerKit
