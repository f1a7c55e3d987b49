#include "server/sockets/StreamClient.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "Wire/FrameInspector.h"
#include "server/sockets/ListenerLimits.h"

namespace SettingsHandlerKit {

namespace {

/// What is written at once, and so what a client that does not read costs besides its backlog.
constexpr std::size_t largestWrite = 16384;
/// The memory that an idle client keeps for its next frame.
constexpr std::size_t worthKeeping = 4096;

}  // namespace

StreamClient::StreamClient(std::shared_ptr<ByteStream> itsStream, std::shared_ptr<Framing> itsFraming, Place itsPlace)
    : stream(std::move(itsStream)),
      framing(std::move(itsFraming)),
      place(std::move(itsPlace)),
      backlog(place.backlog, [this] { drop(); }) {
    stream->setUser(this);
}

StreamClient::~StreamClient() {
    stream->setUser(nullptr);
    stream->close();
}

void StreamClient::start() {
    place.listener.connected(shared_from_this());
    takeTurn();
}

void StreamClient::send(const std::shared_ptr<const std::string>& frame) {
    if (backlog.isFinishing() || outputLost || !stream->isOpen()) {
        return;
    }
    if (backlog.empty() && !stream->isWriting() && output.size() + frame->size() <= largestWrite) {
        // What can be written at once needs no queue, which costs more than the writing.
        framing->encodeControl(output);
        framing->encode(*frame, 0, frame->size(), output);
    } else {
        backlog.push(frame);
    }
    writeOn();
}

void StreamClient::writeOn() {
    while (!takingTurn && stream->isOpen() && !stream->isWriting()) {
        fillOutput();
        if (output.empty()) {
            if (backlog.isFinishing()) {
                outputFinished();
            }
            return;
        }
        stream->write(output);
        output.clear();
        if (output.capacity() > worthKeeping) {
            std::exchange(output, {});
        }
    }
}

void StreamClient::fillOutput() {
    if (outputLost) {
        output.clear();
        return;
    }
    framing->encodeControl(output);
    while (!backlog.empty() && output.size() < largestWrite) {
        const auto frame = backlog[0];
        const std::size_t size = std::min(largestWrite - output.size(), frame->size() - writtenOfFirst);
        framing->encode(*frame, writtenOfFirst, size, output);
        writtenOfFirst += size;
        if (writtenOfFirst == frame->size()) {
            writtenOfFirst = 0;
            backlog.pop();
        }
    }
    if (backlog.empty() && backlog.isFinishing()) {
        framing->encodeEnd(output);
    }
}

void StreamClient::written(bool isSent) {
    const auto self = shared_from_this();
    if (!isSent) {
        // The client reads no more. The requests that it sent are still handled.
        outputLost = true;
        backlog.clear();
    }
    writeOn();
    if (backlog.resumeInput(framing->controlMemory())) {
        takeLater(self);
    }
    countInput();
}

void StreamClient::received(const char* bytes, std::size_t size) {
    if (backlog.isFinishing()) {
        return;
    }
    framing->append(bytes, size);
    takeTurn();
}

void StreamClient::inputEnded() {
    // Frames that came before are still taken.
    inputOver = true;
    takeTurn();
}

void StreamClient::takeTurn() {
    const auto self = shared_from_this();
    takingTurn = true;
    takeFrames(self);
    takingTurn = false;
    writeOn();
    if (backlog.resumeInput(framing->controlMemory())) {
        takeLater(self);
    }
    countInput();
}

void StreamClient::countInput() {
    if (!stream->isOpen()) {
        framing->clear();
    }
    backlog.setInput(framing->memory());
}

void StreamClient::takeFrames(const std::shared_ptr<StreamClient>& self) {
    const auto end = std::chrono::steady_clock::now() + longestTurn;
    for (std::size_t taken = 0; taken < framesPerTurn; ++taken) {
        // A turn that took all frames needs no further one.
        if (taken > 0 && framing->size() > 0 && std::chrono::steady_clock::now() >= end) {
            break;
        }
        if (backlog.isFinishing() || !stream->isOpen()) {
            return;
        }
        if (backlog.pauseInput(framing->controlMemory())) {
            // It may send on until its frames fill a buffer: a series of requests before it reads the first reply.
            if (framing->size() > Wire::maximumFrameSize) {
                stream->stopReading();
            }
            return;
        }
        if (const auto frame = framing->next()) {
            handle(self, *frame);
        } else if (framing->hasEnded()) {
            finishWithoutBacklog();
            return;
        } else {
            inputOver ? finish() : stream->startReading();
            return;
        }
    }
    takeLater(self);
}

void StreamClient::handle(const std::shared_ptr<StreamClient>& self, const Framing::Frame& frame) {
    if (frame.tooLarge) {
        place.listener.oversized(self);
    } else {
        place.listener.received(self, frame.text);
    }
}

void StreamClient::takeLater(const std::shared_ptr<StreamClient>& self) {
    if (stream->isOpen()) {
        stream->stopReading();
        place.turns.later([self] { self->takeTurn(); });
    }
}

void StreamClient::finish() {
    if (backlog.isFinishing() || !stream->isOpen()) {
        return;
    }
    backlog.finish();
    stream->stopReading();
    writeOn();
}

void StreamClient::finishWithoutBacklog() {
    backlog.clear();
    writtenOfFirst = 0;
    finish();
    writeOn();
}

void StreamClient::drop() {
    stream->close();
    std::exchange(output, {});
    framing->clear();
    backlog.clear();
}

}  // namespace SettingsHandlerKit
