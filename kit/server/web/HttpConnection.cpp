#include "server/web/HttpConnection.h"

#include <algorithm>
#include <utility>

namespace SettingsHandlerKit {

namespace {

/// What a connection that does not read costs besides the answer.
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

void HttpConnection::answerWhatCame() {
    const auto self = shared_from_this();
    stream->readNow();
    while (takeRequest()) {
    }
}

bool HttpConnection::takeRequest() {
    if (answering || ending || upgraded || !stream->isOpen()) {
        return false;
    }
    const auto self = shared_from_this();
    const HttpRequest request = readHttpRequest(input);
    switch (request.state) {
        case HttpRequest::State::INCOMPLETE:
            inputOver ? close() : stream->startReading();
            return false;
        case HttpRequest::State::TOO_LONG:
            beginAnswer(plainAnswer(431, "The head of the request is over 4 KiB."), true, true);
            return true;
        case HttpRequest::State::MALFORMED:
            beginAnswer(plainAnswer(400, "The request is not valid HTTP."), true, true);
            return true;
        default:
            break;
    }
    input.erase(0, request.size);
    HttpAnswer answer = server.answer(*this, request);
    if (answer.status == 101) {
        upgraded = true;
        stream->write(headOf(answer, false));
        server.upgrade(*this, request);
    } else {
        beginAnswer(std::move(answer), !request.isHead, !request.keepsConnection || request.asksForWebSocket);
    }
    return true;
}

void HttpConnection::beginAnswer(HttpAnswer answer, bool withBody, bool closes) {
    stream->stopReading();
    answering = true;
    closesAfterAnswer = closes;
    output = headOf(answer, closes);
    body = withBody ? std::move(answer.body) : nullptr;
    sentOfBody = 0;
    beginWait();
    writeOn();
}

void HttpConnection::writeOn() {
    while (stream->isOpen() && !stream->isWriting()) {
        if (body && output.size() < largestWrite) {
            // A short answer is one write.
            const std::size_t size = std::min(largestWrite - output.size(), body->size() - sentOfBody);
            output.append(*body, sentOfBody, size);
            sentOfBody += size;
        }
        if (output.empty()) {
            answered();
            return;
        }
        stream->write(std::exchange(output, {}));
    }
}

void HttpConnection::written(bool isSent) {
    if (!isSent) {
        close();
    } else if (answering) {
        writeOn();
    }
}

void HttpConnection::answered() {
    answering = false;
    body.reset();
    beginWait();
    if (closesAfterAnswer) {
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
    if (answering) {
        closesAfterAnswer = true;
    } else if (!ending) {
        close();
    }
}

}  // namespace SettingsHandlerKit
