#include "server/web/WebSocketFraming.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include <wslay/wslay.h>

#include "Wire/Utf8.h"

namespace SettingsHandlerKit {

namespace {

/// The memory that is kept for the next input.
constexpr std::size_t worthKeeping = 4096;
/// Memory of a waiting control frame besides its content.
constexpr std::size_t controlOverhead = 128;

const std::uint8_t* bytesOf(const std::string& text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

/// `sink` points to where an object has the text to write to.
ssize_t appendTo(const std::uint8_t* data, std::size_t size, void* sink) {
    (*static_cast<std::string**>(sink))->append(reinterpret_cast<const char*>(data), size);
    return static_cast<ssize_t>(size);
}

}  // namespace

WebSocketWriter::WebSocketWriter() {
    const wslay_frame_callbacks callbacks{
        [](const std::uint8_t* data, std::size_t size, int, void* text) { return appendTo(data, size, text); }, nullptr,
        nullptr};
    if (wslay_frame_context_init(&context, &callbacks, &sink) != 0) {
        throw std::bad_alloc();
    }
}

WebSocketWriter::~WebSocketWriter() {
    wslay_frame_context_free(context);
}

void WebSocketWriter::write(const std::string& message, std::size_t from, std::size_t size, std::string& output) {
    wslay_frame_iocb part{};
    part.fin = from + size == message.size() ? 1 : 0;
    part.opcode = from == 0 ? WSLAY_TEXT_FRAME : WSLAY_CONTINUATION_FRAME;
    part.payload_length = size;
    part.data = bytesOf(message) + from;
    part.data_length = size;
    sink = &output;
    wslay_frame_send(context, &part);
}

/// The callbacks of the library.
struct WebSocketFraming::Callbacks {
    static WebSocketFraming& of(void* self) { return *static_cast<WebSocketFraming*>(self); }

    /// Gives the library the bytes of one message, and not those behind it: they wait until it is handled. So a header
    /// is given byte by byte, because only the library knows where it ends.
    static ssize_t give(wslay_event_context_ptr context, std::uint8_t* buffer, std::size_t size, int /*flags*/,
                        void* user) {
        WebSocketFraming& self = of(user);
        if (self.isMessageComplete || self.size() == 0) {
            wslay_event_set_error(context, WSLAY_ERR_WOULDBLOCK);
            return -1;
        }
        const std::uint64_t wanted = std::max<std::uint64_t>(self.restOfFrame, 1);
        const std::size_t count = std::min({size, self.size(), static_cast<std::size_t>(wanted)});
        std::copy_n(self.input.begin() + static_cast<std::ptrdiff_t>(self.taken), count, buffer);
        self.taken += count;
        self.restOfFrame -= std::min<std::uint64_t>(self.restOfFrame, count);
        return static_cast<ssize_t>(count);
    }

    static ssize_t send(wslay_event_context_ptr /*context*/, const std::uint8_t* data, std::size_t size, int /*flags*/,
                        void* user) {
        return appendTo(data, size, &of(user).sink);
    }

    static void frameBegins(wslay_event_context_ptr /*context*/, const wslay_event_on_frame_recv_start_arg* frame,
                            void* user) {
        of(user).frameBegins(frame->opcode, frame->payload_length);
    }

    static void partCame(wslay_event_context_ptr /*context*/, const wslay_event_on_frame_recv_chunk_arg* part,
                         void* user) {
        WebSocketFraming& self = of(user);
        if (self.isPartOfMessage && !self.hasEnded()) {
            self.message.append(reinterpret_cast<const char*>(part->data), part->data_length);
        }
    }

    static void messageCame(wslay_event_context_ptr /*context*/, const wslay_event_on_msg_recv_arg* arrived,
                            void* user) {
        WebSocketFraming& self = of(user);
        self.isMessageComplete = arrived->opcode == WSLAY_TEXT_FRAME && !self.hasEnded();
        // The library checks the reason of a Close frame only when all of it came at once.
        self.isReasonInvalid = arrived->opcode == WSLAY_CONNECTION_CLOSE && arrived->msg_length > 2 &&
                               !Wire::isValidUtf8({reinterpret_cast<const char*>(arrived->msg) + 2, arrived->msg_length - 2});
    }
};

void WebSocketFraming::Free::operator()(wslay_event_context* context) const {
    wslay_event_context_free(context);
}

WebSocketFraming::WebSocketFraming(std::size_t limitOfMessages, std::shared_ptr<WebSocketWriter> itsWriter,
                                   std::string firstInput)
    : limit(limitOfMessages), writer(std::move(itsWriter)), input(std::move(firstInput)) {
    makeContext();
}

void WebSocketFraming::makeContext() {
    const wslay_event_callbacks callbacks{Callbacks::give,     Callbacks::send, nullptr,
                                          Callbacks::frameBegins, Callbacks::partCame, nullptr,
                                          Callbacks::messageCame};
    wslay_event_context* made = nullptr;
    if (wslay_event_context_server_init(&made, &callbacks, this) != 0) {
        throw std::bad_alloc();
    }
    context.reset(made);
    // The library would keep each fragment, however short, in blocks of memory of its own.
    wslay_event_config_set_no_buffering(made, 1);
    wslay_event_config_set_max_recv_msg_length(made, std::numeric_limits<std::int64_t>::max());
}

void WebSocketFraming::append(const char* bytes, std::size_t size) {
    input.erase(0, std::exchange(taken, 0));
    input.append(bytes, size);
}

std::size_t WebSocketFraming::room() const {
    return limit + 1 - std::min(size(), limit);
}

std::size_t WebSocketFraming::memory() const {
    return (size() == 0 ? 0 : input.capacity()) + (message.empty() ? 0 : message.capacity());
}

std::optional<Framing::Frame> WebSocketFraming::next() {
    while (size() > 0 && !hasEnded() && !isMessageComplete) {
        // The library closes without a status when it cannot read a header.
        if (const bool isMalformed = wslay_event_recv(context.get()) != 0; isMalformed || isReasonInvalid) {
            // Nobody gets the library's own Close frame.
            makeContext();
            close(isMalformed ? WSLAY_CODE_PROTOCOL_ERROR : WSLAY_CODE_INVALID_FRAME_PAYLOAD_DATA, "");
        }
    }
    if (size() == 0) {
        input.clear();
        taken = 0;
        if (input.capacity() > worthKeeping) {
            std::exchange(input, {});
        }
    }
    if (!std::exchange(isMessageComplete, false)) {
        return std::nullopt;
    }
    return Frame{false, std::exchange(message, {})};
}

void WebSocketFraming::frameBegins(unsigned char kind, std::uint64_t size) {
    // The library has the first byte of the content already.
    restOfFrame = size - std::min<std::uint64_t>(size, 1);
    isPartOfMessage = !wslay_is_ctrl_frame(kind);
    if (kind == WSLAY_BINARY_FRAME) {
        close(WSLAY_CODE_UNSUPPORTED_DATA, "text frames only");
    } else if (kind == WSLAY_CONNECTION_CLOSE && size == 1) {
        // Half a status, which the library takes for none.
        close(WSLAY_CODE_PROTOCOL_ERROR, "");
    } else if (isPartOfMessage && size > limit - message.size()) {
        close(WSLAY_CODE_MESSAGE_TOO_BIG, "a frame over 64 KiB");
    }
}

bool WebSocketFraming::hasEnded() const {
    return wslay_event_get_read_enabled(context.get()) == 0;
}

void WebSocketFraming::clear() {
    std::exchange(input, {});
    taken = 0;
    std::exchange(message, {});
}

void WebSocketFraming::encodeControl(std::string& output) {
    if (wslay_event_want_write(context.get()) != 0) {
        sink = &output;
        wslay_event_send(context.get());
    }
}

std::size_t WebSocketFraming::controlMemory() const {
    return wslay_event_get_queued_msg_length(context.get()) +
           controlOverhead * wslay_event_get_queued_msg_count(context.get());
}

void WebSocketFraming::encodeEnd(std::string& output) {
    if (lastStatus != 0) {
        close(lastStatus, lastReason);
    }
    encodeControl(output);
}

void WebSocketFraming::ping() {
    const wslay_event_msg question{WSLAY_PING, nullptr, 0};
    wslay_event_queue_msg(context.get(), &question);
}

void WebSocketFraming::close(std::uint16_t status, const std::string& reason) {
    wslay_event_queue_close(context.get(), status, bytesOf(reason), reason.size());
    wslay_event_shutdown_read(context.get());
}

void WebSocketFraming::closeAtEnd(std::uint16_t status, const std::string& reason) {
    lastStatus = status;
    lastReason = reason;
}

}  // namespace SettingsHandlerKit
