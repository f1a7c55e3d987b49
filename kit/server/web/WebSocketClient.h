#pragma once

#include <chrono>
#include <memory>

#include "server/loop/Deadline.h"
#include "server/sockets/StreamClient.h"
#include "server/web/WebSocketFraming.h"

namespace SettingsHandlerKit {

/// A client at a WebSocket. One from which nothing comes for `timeout` is pinged, and dropped when nothing comes for as
/// long again.
class WebSocketClient : public StreamClient {
public:
    /// The WebSocket is open.
    WebSocketClient(EventLoop& loop, std::shared_ptr<ByteStream> stream, std::shared_ptr<WebSocketFraming> framing,
                    Place place, std::chrono::milliseconds timeout);

    /// Closes with 1001 when its backlog is sent.
    void stop();
    /// Closes with 4401, because key or cookie are no longer valid: at once, or, when bytes are on their way, after they
    /// are read, within two seconds.
    void revoke();

private:
    void received(const char* bytes, std::size_t size) override;
    void inputEnded() override;
    void written(bool isSent) override;
    void outputFinished() override;
    void expired();
    void heard();

    const std::shared_ptr<WebSocketFraming> framing;
    const std::chrono::milliseconds timeout;
    Deadline deadline;
    std::chrono::steady_clock::time_point lastHeard = std::chrono::steady_clock::now();
    bool pinged = false;
    bool revoked = false;
    /// The output is ended; what comes is ignored until the client ends it too.
    bool ending = false;
};

}  // namespace SettingsHandlerKit
