#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "server/loop/Deadline.h"
#include "server/loop/Turns.h"
#include "server/sockets/ByteStream.h"
#include "server/web/HttpRequest.h"
#include "server/web/HttpResponse.h"

namespace SettingsHandlerKit {

/// A connection that speaks HTTP/1.1. It responds to requests one after the other, one a turn of the event loop, and
/// closes after a request with a body, which it does not read. The other side has limited time to send a request, to
/// read its response, and between two of them.
class HttpConnection final : private ByteStream::User, public std::enable_shared_from_this<HttpConnection> {
public:
    /// Responds to the requests; it outlives the connections.
    class Server {
    public:
        virtual ~Server() = default;
        virtual HttpResponse respond(HttpConnection& connection, const HttpRequest& request) = 0;
        /// A response with status 101 is written: the connection belongs to the server now.
        virtual void upgrade(HttpConnection& connection, const HttpRequest& request) = 0;
        virtual void remove(HttpConnection& connection) = 0;
    };

    HttpConnection(EventLoop& loop, Turns& turns, std::shared_ptr<ByteStream> stream, std::chrono::milliseconds timeout,
                   Server& server);
    ~HttpConnection() override;

    void start();
    /// Responds to what came already, as far as the other side reads the responses.
    void respondToWhatCame();
    /// Closes when the response that is on its way is sent.
    void finish();
    void close() { stream->close(); }

    const std::shared_ptr<ByteStream>& byteStream() const { return stream; }
    /// What came after the last request.
    std::string takeInput() { return std::move(input); }

private:
    std::size_t room() const override { return longestWebRequest + 1 - std::min(input.size(), longestWebRequest); }
    void received(const char* bytes, std::size_t size) override;
    void inputEnded() override;
    void written(bool isSent) override;
    void closed() override { server.remove(*this); }

    /// Returns: whether there was a request.
    bool takeRequest();
    void beginResponse(HttpResponse responseToSend, bool withBody, bool closes);
    void writeOn();
    void responded();
    void beginWait();
    void expired();

    const std::shared_ptr<ByteStream> stream;
    Turns& turns;
    Server& server;
    const std::chrono::milliseconds timeout;
    Deadline deadline;
    /// At most the longest request, and one byte more.
    std::string input;
    bool inputOver = false;
    /// Head and body of the response that is on its way.
    std::string output;
    std::shared_ptr<const std::string> body;
    std::size_t sentOfBody = 0;
    bool responding = false;
    bool closesAfterResponse = false;
    /// The output is ended; what comes is ignored until the other side ends it too.
    bool ending = false;
    bool upgraded = false;
    /// The time was over, and no other wait has begun since.
    bool isExpired = false;
};

}  // namespace SettingsHandlerKit
