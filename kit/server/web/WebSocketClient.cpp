#include "server/web/WebSocketClient.h"

#include <utility>

namespace SettingsHandlerKit {

namespace {

constexpr std::uint16_t statusGoingAway = 1001;
/// Of the statuses that applications may define.
constexpr std::uint16_t statusKeyReplaced = 4401;
constexpr std::chrono::seconds revocationGrace{2};

}  // namespace

WebSocketClient::WebSocketClient(EventLoop& loop, std::shared_ptr<ByteStream> itsStream,
                                 std::shared_ptr<WebSocketFraming> itsFraming, Place itsPlace,
                                 std::chrono::milliseconds time)
    : StreamClient(std::move(itsStream), itsFraming, std::move(itsPlace)),
      framing(std::move(itsFraming)),
      timeout(time),
      deadline(loop, [this] { expired(); }) {
    deadline.set(timeout);
}

void WebSocketClient::heard() {
    lastHeard = std::chrono::steady_clock::now();
    pinged = false;
}

void WebSocketClient::received(const char* bytes, std::size_t size) {
    heard();
    StreamClient::received(bytes, size);
}

void WebSocketClient::inputEnded() {
    if (ending) {
        stream->close();
    } else {
        StreamClient::inputEnded();
    }
}

void WebSocketClient::written(bool isSent) {
    if (isSent) {
        // Its pongs may wait behind what it reads. That it reads shows that it is alive.
        heard();
    }
    StreamClient::written(isSent);
}

void WebSocketClient::expired() {
    if (ending || revoked) {
        drop();
        return;
    }
    // After a pause of the whole process, what came meanwhile is not read yet.
    stream->readNow();
    const auto silence =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - lastHeard);
    if (pinged) {
        drop();
    } else if (silence < timeout) {
        deadline.set(timeout - silence);
    } else {
        pinged = true;
        framing->ping();
        writeOn();
        deadline.set(timeout);
    }
}

void WebSocketClient::outputFinished() {
    if (hasInputEnded() || isOutputLost()) {
        stream->close();
    } else if (!std::exchange(ending, true)) {
        // Closed now, with something unread, the kernel would discard what is on its way to the client.
        stream->endOutput();
        stream->startReading();
        deadline.set(timeout);
    }
}

void WebSocketClient::stop() {
    framing->closeAtEnd(statusGoingAway, "the host stops");
    finish();
}

void WebSocketClient::revoke() {
    revoked = true;
    deadline.set(revocationGrace);
    framing->close(statusKeyReplaced, "the key was replaced");
    finishWithoutBacklog();
}

}  // namespace SettingsHandlerKit
