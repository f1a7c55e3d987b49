#include "server/web/HttpConnection.h"

#include <algorithm>
#include <utility>

namespace SettingsHandlerKit {

namespace {

/// What a connection that does not read costs besides the response.
constexpr std::size_t largestWrite = 16384;

}  // namespace

HttpConnection::HttpConnection(EventLoop& loop, Turns& turnsOfLoop, std::shared_ptr<ByteStream> itsStream,
                               std::chrono::milliseconds time, Server& itsServer)
    : stream(std::move(itsStream)), turns(turnsOfLoop), server(itsServer), timeout(time), deadline(loop, [this] {
          expired();
      }) {
    stream->setUser(this);
}

HttpConnection::~HttpConnection() {
    if (!upgraded) {
        stream->setUser(nullptr);
        stream->close();
    }
}

void HttpConnection::start() {
    beginWait();
    stream->startReading();
}

void HttpConnection::beginWait() {
    isExpired = false;
    deadline.set(timeout);
}

void HttpConnection::expired() {
    const auto self = shared_from_this();
    isExpired = true;
    // After a pause of the whole process, what came meanwhile is not read yet.
    stream->readNow();
    if (isExpired && !upgraded) {
        close();
    }
}

void HttpConnection::received(const char* bytes, std::size_t size) {
    if (ending) {
        return;
    }
    if (input.empty()) {
        beginWait();
    }
    input.append(bytes, size);
    takeRequest();
}

void HttpConnection::inputEnded() {
    inputOver = true;
    if (ending) {
        close();
    } else {
        takeRequest();
    }
}

void HttpConnection::respondToWhatCame() {
    const auto self = shared_from_this();
    stream->readNow();
    while (takeRequest()) {
    }
}

bool HttpConnection::takeRequest() {
    if (responding || ending || upgraded || !stream->isOpen()) {
        return false;
    }
    const auto self = shared_from_this();
    const HttpRequest request = readHttpRequest(input);
    switch (request.state) {
        case HttpRequest::State::INCOMPLETE:
            inputOver ? close() : stream->startReading();
            return false;
        case HttpRequest::State::TOO_LONG:
            beginResponse(plainResponse(431, "The head of the request is over 4 KiB."), true, true);
            return true;
        case HttpRequest::State::MALFORMED:
            beginResponse(plainResponse(400, "The request is not valid HTTP."), true, true);
            return true;
        default:
            break;
    }
    input.erase(0, request.size);
    HttpResponse response = server.respond(*this, request);
    if (response.status == 101) {
        upgraded = true;
        stream->write(headOf(response, false));
        server.upgrade(*this, request);
    } else {
        beginResponse(std::move(response), !request.isHead, !request.keepsConnection || request.asksForWebSocket);
    }
    return true;
}

void HttpConnection::beginResponse(HttpResponse response, bool withBody, bool closes) {
    stream->stopReading();
    responding = true;
    closesAfterResponse = closes;
    output = headOf(response, closes);
    body = withBody ? std::move(response.body) : nullptr;
    sentOfBody = 0;
    beginWait();
    writeOn();
}

void HttpConnection::writeOn() {
    while (stream->isOpen() && !stream->isWriting()) {
        if (body && output.size() < largestWrite) {
            // A short response is one write.
            const std::size_t size = std::min(largestWrite - output.size(), body->size() - sentOfBody);
            output.append(*body, sentOfBody, size);
            sentOfBody += size;
        }
        if (output.empty()) {
            responded();
            return;
        }
        stream->write(std::exchange(output, {}));
    }
}

void HttpConnection::written(bool isSent) {
    if (!isSent) {
        close();
    } else if (responding) {
        writeOn();
    }
}

void HttpConnection::responded() {
    responding = false;
    body.reset();
    beginWait();
    if (closesAfterResponse) {
        // Closed now, with something unread, the kernel would discard what is on its way to the other side.
        ending = true;
        stream->endOutput();
        std::exchange(input, {});
        inputOver ? close() : stream->startReading();
    } else if (!input.empty() || inputOver) {
        turns.later([self = shared_from_this()] { self->takeRequest(); });
    } else {
        std::exchange(input, {});
        stream->startReading();
    }
}

void HttpConnection::finish() {
    if (responding) {
        closesAfterResponse = true;
    } else if (!ending) {
        close();
    }
}

}  // namespace SettingsHandlerKit
