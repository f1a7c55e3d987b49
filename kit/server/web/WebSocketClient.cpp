#include "server/web/WebSocketClient.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <libwebsockets.h>

#include "Wire/FrameInspector.h"

namespace SettingsHandlerKit {

namespace {

/// Of the statuses that applications may define.
constexpr unsigned short closeStatusKeyReplaced = 4401;
/// How long a client whose key was replaced may take to read what the library has of a message, so that the status can
/// follow.
constexpr lws_usec_t revocationGrace = 2 * LWS_USEC_PER_SEC;

/// The library keeps a copy of what a connection does not take at once, so it gets a part of a frame at a time.
constexpr std::size_t largestPart = 16384;

}  // namespace

WebSocketClient::WebSocketClient(lws* itsConnection, Origin origin, ClientListener& observer,
                                 std::shared_ptr<Backlog> backlogOfAll)
    : connection(itsConnection),
      clientOrigin(origin),
      clientListener(observer),
      backlog(std::move(backlogOfAll), [this] { drop(); }) {}

void WebSocketClient::send(const std::shared_ptr<const std::string>& frame) {
    if (gone || backlog.isFinishing()) {
        return;
    }
    if (!mayWriteAtOnce(*frame)) {
        backlog.push(frame);
        if (!gone) {
            lws_callback_on_writable(connection);
        }
    } else if (!write(*frame, 0, frame->size())) {
        drop();
    }
}

/// What the kernel takes at once needs no round of the event loop. The library keeps what the kernel does not take, and
/// pongs, which go before the replies to frames that came after the ping.
bool WebSocketClient::mayWriteAtOnce(const std::string& frame) const {
    return !handling && backlog.empty() && frame.size() <= largestPart && lws_partial_buffered(connection) == 0;
}

void WebSocketClient::drop() {
    gone = true;
    backlog.clear();
    std::exchange(message, {});
    lws_set_timeout(connection, PENDING_TIMEOUT_USER_REASON_BASE, LWS_TO_KILL_ASYNC);
    // Outside its own callbacks the library checks timeouts only when something comes in at one of its connections.
    lws_cancel_service(lws_get_context(connection));
}

void WebSocketClient::opened() {
    clientListener.connected(shared_from_this());
}

bool WebSocketClient::received(const char* bytes, std::size_t size) {
    if (gone || backlog.isFinishing()) {
        return true;
    }
    if (lws_frame_is_binary(connection) != 0) {
        return close(LWS_CLOSE_STATUS_UNACCEPTABLE_OPCODE, "text frames only");
    }
    if (message.size() + size > Wire::maximumFrameSize) {
        return close(LWS_CLOSE_STATUS_MESSAGE_TOO_LARGE, "a frame over 64 KiB");
    }
    message.append(bytes, size);
    if (lws_is_final_fragment(connection) == 0 || lws_remaining_packet_payload(connection) != 0) {
        backlog.setInput(message.capacity());
        return true;
    }
    const std::string frame = std::exchange(message, {});
    backlog.setInput(0);
    handling = true;
    clientListener.received(shared_from_this(), frame);
    handling = false;
    if (!gone && !backlog.isInputPaused() && backlog.pauseInput()) {
        lws_rx_flow_control(connection, 0);
    }
    return true;
}

bool WebSocketClient::writable() {
    if (gone) {
        return false;
    }
    if (backlog.empty()) {
        if (backlog.isFinishing()) {
            // A connection that is closed in this callback gets no close status.
            lws_set_timer_usecs(connection, 1);
        }
        return true;
    }
    if (!writeTurn()) {
        return false;
    }
    if (backlog.isInputPaused()) {
        // Its pongs wait with its frames. That it reads shows that it is alive.
        lws_validity_confirmed(connection);
    }
    if (backlog.resumeInput()) {
        lws_rx_flow_control(connection, 1);
    }
    if (!backlog.empty() || backlog.isFinishing()) {
        lws_callback_on_writable(connection);
    }
    return true;
}

/// A turn's frames go out together as far as the connection takes them, at most as much as one frame may be long.
bool WebSocketClient::writeTurn() {
    std::size_t sent = 0;
    do {
        const std::size_t size = std::min(largestPart, backlog[0]->size() - written);
        if (!writePart(size)) {
            return false;
        }
        sent += size;
    } while (!backlog.empty() && sent < Wire::maximumFrameSize && lws_partial_buffered(connection) == 0);
    return true;
}

bool WebSocketClient::writePart(std::size_t size) {
    const auto frame = backlog[0];
    const std::size_t from = written;
    written += size;
    if (written == frame->size()) {
        backlog.pop();
        written = 0;
    }
    return write(*frame, from, size);
}

bool WebSocketClient::write(const std::string& frame, std::size_t from, std::size_t size) {
    std::vector<unsigned char> buffer(LWS_PRE + size);
    std::copy_n(frame.begin() + static_cast<std::ptrdiff_t>(from), size, buffer.begin() + LWS_PRE);
    const int protocol = lws_write_ws_flags(LWS_WRITE_TEXT, from == 0 ? 1 : 0, from + size == frame.size() ? 1 : 0);
    return lws_write(connection, buffer.data() + LWS_PRE, size, static_cast<lws_write_protocol>(protocol)) >= 0;
}

bool WebSocketClient::timerExpired() {
    return revoked ? close(closeStatusKeyReplaced, "the key was replaced")
                   : close(LWS_CLOSE_STATUS_GOINGAWAY, "the host stops");
}

void WebSocketClient::finish() {
    backlog.finish();
    lws_callback_on_writable(connection);
}

void WebSocketClient::revoke() {
    if (gone) {
        return;
    }
    revoked = true;
    backlog.finish();
    backlog.clear();
    if (lws_partial_buffered(connection) == 0) {
        lws_set_timer_usecs(connection, 1);
    } else {
        // Closed now, it would get no close status.
        lws_callback_on_writable(connection);
        lws_set_timer_usecs(connection, revocationGrace);
    }
}

bool WebSocketClient::close(unsigned short status, const char* reason) {
    gone = true;
    std::vector<unsigned char> text(reason, reason + std::char_traits<char>::length(reason));
    lws_close_reason(connection, static_cast<lws_close_status>(status), text.data(), text.size());
    return false;
}

void WebSocketClient::closed() {
    gone = true;
    clientListener.disconnected(shared_from_this(), backlog.disconnectReason());
}

}  // namespace SettingsHandlerKit
