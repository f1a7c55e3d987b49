#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "SettingsHandlerKit/Client.h"
#include "SettingsHandlerKit/ClientListener.h"
#include "server/loop/Turns.h"
#include "server/sockets/Backlog.h"
#include "server/sockets/ByteStream.h"
#include "server/sockets/Framing.h"

namespace SettingsHandlerKit {

/// A client whose frames come and go over a byte stream. ListenerLimits.h has how much of them is taken and kept.
class StreamClient : public Client, protected ByteStream::User, public std::enable_shared_from_this<StreamClient> {
public:
    /// What a listener gives to its clients; it outlives them, or calls `detach` before it goes.
    struct Place {
        ClientListener& listener;
        Turns& turns;
        std::shared_ptr<Backlog> backlog;
        Origin origin;
        ListenerKind kind;
        /// Called when the client is gone.
        std::function<void(StreamClient&)> remove;
    };

    StreamClient(std::shared_ptr<ByteStream> stream, std::shared_ptr<Framing> framing, Place place);
    ~StreamClient() override;

    void send(const std::shared_ptr<const std::string>& frame) override;
    Origin origin() const override { return place.origin; }
    ListenerKind listenerKind() const override { return place.kind; }
    void close() override { drop(); }
    DisconnectReason disconnectReason() const { return backlog.disconnectReason(); }

    /// Reads from now on, and takes the frames that are there already.
    void start();
    /// Closes when its backlog is sent.
    void finish();
    /// Closes at once.
    void drop();
    /// Notifies nobody from now on.
    void detach() { stream->setUser(nullptr); }

protected:
    void received(const char* bytes, std::size_t size) override;
    void inputEnded() override;
    void written(bool isSent) override;
    void closed() override { place.remove(*this); }

    void writeOn();
    /// Forgets what is not sent yet, then finishes.
    void finishWithoutBacklog();
    /// Everything is sent.
    virtual void outputFinished() { stream->close(); }
    bool hasInputEnded() const { return inputOver; }
    bool isOutputLost() const { return outputLost; }

    const std::shared_ptr<ByteStream> stream;

private:
    std::size_t room() const override { return framing->room(); }
    void takeTurn();
    void takeFrames(const std::shared_ptr<StreamClient>& self);
    void takeLater(const std::shared_ptr<StreamClient>& self);
    void handle(const std::shared_ptr<StreamClient>& self, const Framing::Frame& frame);
    void countInput();
    void fillOutput();

    const std::shared_ptr<Framing> framing;
    Place place;
    ClientBacklog backlog;
    /// The bytes that are written next; what a client gets in one turn is one write.
    std::string output;
    /// How much of the backlog's first frame was written.
    std::size_t writtenOfFirst = 0;
    bool takingTurn = false;
    bool inputOver = false;
    bool outputLost = false;
};

}  // namespace SettingsHandlerKit
