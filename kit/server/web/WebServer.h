#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "server/loop/EventLoop.h"
#include "server/sockets/Backlog.h"
#include "server/sockets/ClientListener.h"
#include "server/sockets/TcpListener.h"
#include "server/web/EvictionReport.h"
#include "server/web/HttpAnswer.h"
#include "server/web/WebConnections.h"
#include "server/web/WebSite.h"

struct lws;
struct lws_context;
struct lws_vhost;
struct lws_retry_bo;

namespace SettingsHandlerKit {

class WebSocketClient;

/// The web port: pages, health and metrics by HTTP, and two WebSockets with one frame a text message.
///
/// - `/settings`, subprotocol `settings.v1`: what the settings socket speaks, for clients of origin PAGE.
/// - `/device`, subprotocol `device.v1`: what the device socket speaks, for clients of origin DEVICE.
///
/// The limits of ListenerLimits.h hold. A message over the frame limit closes its connection with 1009, a binary one
/// with 1003. Of connections of any kind `maximumClients` are served at a time, of them
/// `WebConnections::maximumUnauthenticated` that have shown neither key nor cookie. To make room for a new connection
/// the oldest of those is closed, after what it has sent was read; when there is none, the new connection is closed.
///
/// One thread only. The event loop outlives it, and runs once more after `closeNow`.
class WebServer {
public:
    /// The WebSockets at `/settings` are clients of `settingsClients`, those at `/device` of `deviceClients`; both
    /// outlive the server. What waits for clients counts in `backlog`. Errors: `ListenerError`.
    WebServer(EventLoop& loop, std::unique_ptr<TcpListener> listener, WebSite site, ClientListener& settingsClients,
              ClientListener& deviceClients, std::shared_ptr<Backlog> backlog);
    ~WebServer();

    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    /// Takes no more connections, and closes each WebSocket when its backlog is sent.
    void close();
    /// Closes the remaining connections at once.
    void closeNow();

    /// From now on `key` and cookies signed with `secret` are valid, and no others. WebSockets that are open are closed
    /// with 4401.
    void replaceKey(const std::string& key, const std::string& secret);

private:
    class Callbacks;
    /// How callbacks and deferred actions reach the server; null when it is gone.
    struct Self {
        WebServer* server;
    };

    void createContext();
    void adopt(int descriptor);
    void makeRoom();
    bool readWhatCame(lws* connection);
    static void drop(lws* connection);
    bool serveRequest(lws* connection, const std::string& path);
    bool continueAnswer(lws* connection);
    /// Returns: true when the connection may become a WebSocket; otherwise it was answered.
    bool admitWebSocket(lws* connection);
    HttpAnswer answerFor(lws* connection, const std::string& path);
    void open(lws* connection, Origin origin);
    void remove(lws* connection);

    EventLoop& loop;
    std::unique_ptr<TcpListener> listener;
    WebSite site;
    ClientListener& settingsClients;
    ClientListener& deviceClients;
    std::shared_ptr<Backlog> backlog;
    lws_context* context = nullptr;
    lws_vhost* vhost = nullptr;
    std::unique_ptr<lws_retry_bo> liveness;
    std::unordered_map<lws*, HttpExchange> exchanges;
    std::unordered_map<lws*, std::shared_ptr<WebSocketClient>> clients;
    WebConnections connections;
    EvictionReport evictions;
    bool closing = false;
    std::shared_ptr<Self> self = std::make_shared<Self>(Self{this});
};

}  // namespace SettingsHandlerKit
