#include "server/web/WebSocketClient.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <libwebsockets.h>

#include "Wire/FrameInspector.h"

namespace SettingsHost {

namespace {

/// Of the statuses that applications may define.
constexpr unsigned short closeStatusKeyReplaced = 4401;
/// How long one that is locked out may take to read what the library has of a message, so that the status can follow.
constexpr lws_usec_t revocationGrace = 2 * LWS_USEC_PER_SEC;

/// The library keeps a copy of what a connection does not take at once, so it is given a part of a frame at a time.
constexpr std::size_t largestPart = 16384;

}  // namespace

WebSocketClient::WebSocketClient(lws* itsConnection, Origin origin, const ListenerEvents& listenerEvents)
    : connection(itsConnection),
      clientOrigin(origin),
      events(listenerEvents),
      waiting(listenerEvents.backlog, [this] { drop(DisconnectReason::TOO_SLOW); }) {}

void WebSocketClient::send(const std::shared_ptr<const std::string>& frame) {
    if (gone || finishing) {
        return;
    }
    if (waiting.unreadBehindFirst() > maximumWaiting) {
        drop(DisconnectReason::TOO_SLOW);
        return;
    }
    if (!mayWriteAtOnce(*frame)) {
        waiting.push(frame);
        lws_callback_on_writable(connection);
    } else if (!write(*frame, 0, frame->size())) {
        drop(DisconnectReason::CLOSED);
    }
}

/// What the kernel takes at once needs no round of the event loop. The library keeps what the kernel does not take, and
/// answers to pings, which go before the answers to what came after them.
bool WebSocketClient::mayWriteAtOnce(const std::string& frame) const {
    return !answering && waiting.empty() && frame.size() <= largestPart && lws_partial_buffered(connection) == 0;
}

void WebSocketClient::drop(DisconnectReason why) {
    gone = true;
    departure = why;
    waiting.clear();
    std::exchange(message, {});
    lws_set_timeout(connection, PENDING_TIMEOUT_USER_REASON_BASE, LWS_TO_KILL_ASYNC);
    // Outside its own calls the library would look at the time only when something comes in at one of its connections.
    lws_cancel_service(lws_get_context(connection));
}

void WebSocketClient::arrived() {
    events.arrived(shared_from_this());
}

bool WebSocketClient::received(const char* bytes, std::size_t size) {
    if (gone || finishing) {
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
        waiting.setInput(message.capacity());
        return true;
    }
    const std::string frame = std::exchange(message, {});
    waiting.setInput(0);
    answering = true;
    events.frame(shared_from_this(), frame);
    answering = false;
    if (!paused && !gone && isBehind()) {
        paused = true;
        lws_rx_flow_control(connection, 0);
    }
    return true;
}

bool WebSocketClient::writable() {
    if (gone) {
        return false;
    }
    if (waiting.empty()) {
        if (finishing) {
            // A connection that is closed from here goes without a word.
            lws_set_timer_usecs(connection, 1);
        }
        return true;
    }
    if (!writeTurn()) {
        return false;
    }
    if (paused) {
        // Its answers to pings wait with its frames. That it reads shows that it is there.
        lws_validity_confirmed(connection);
    }
    if (paused && !isBehind()) {
        paused = false;
        lws_rx_flow_control(connection, 1);
    }
    if (!waiting.empty() || finishing) {
        lws_callback_on_writable(connection);
    }
    return true;
}

/// A turn's frames go out together as far as the connection takes them, at most as much as one frame may be long.
bool WebSocketClient::writeTurn() {
    std::size_t sent = 0;
    do {
        const std::size_t size = std::min(largestPart, waiting[0]->size() - written);
        if (!writePart(size)) {
            return false;
        }
        sent += size;
    } while (!waiting.empty() && sent < Wire::maximumFrameSize && lws_partial_buffered(connection) == 0);
    return true;
}

bool WebSocketClient::writePart(std::size_t size) {
    const auto frame = waiting[0];
    const std::size_t from = written;
    written += size;
    if (written == frame->size()) {
        waiting.pop();
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
    finishing = true;
    lws_callback_on_writable(connection);
}

void WebSocketClient::revoke() {
    if (gone) {
        return;
    }
    finishing = true;
    revoked = true;
    waiting.clear();
    if (lws_partial_buffered(connection) == 0) {
        lws_set_timer_usecs(connection, 1);
    } else {
        // Closed now, it would go without a status.
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

void WebSocketClient::left() {
    gone = true;
    events.left(shared_from_this(), departure);
}

}  // namespace SettingsHost
