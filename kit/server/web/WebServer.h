#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "SettingsHandlerKit/ClientListener.h"
#include "server/loop/EventLoop.h"
#include "server/loop/Turns.h"
#include "server/sockets/Backlog.h"
#include "server/sockets/TcpListener.h"
#include "server/web/EvictionReport.h"
#include "server/web/HttpConnection.h"
#include "server/web/WebConnections.h"
#include "server/web/WebSite.h"
#include "server/web/WebSocketRoutes.h"

namespace SettingsHandlerKit {

class StreamClient;
class WebSocketClient;
class WebSocketWriter;

/// The web port: pages, health and metrics by HTTP, and WebSockets with one frame a text message.
///
/// The limits of ListenerLimits.h hold. Of connections of any kind `maximumClients` are served at a time, of them
/// `WebConnections::maximumUnauthenticated` that have shown neither key nor cookie. To make room for a new connection
/// the oldest of those is closed, after what it has sent was read; when there is none, the new connection is closed.
///
/// One thread only. The event loop outlives it, and runs once more after `closeNow`.
class WebServer final : private HttpConnection::Server {
public:
    /// The listeners of `routes` outlive the server; that of the first one is notified of refused connections. What
    /// waits for clients counts in `backlog`. Without a `listener` only connections of `serve`. Errors:
    /// `ListenerError`.
    WebServer(EventLoop& loop, std::unique_ptr<TcpListener> listener, WebSite site, std::vector<WebSocketRoute> routes,
              std::shared_ptr<Backlog> backlog);
    ~WebServer() override;

    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    /// Serves one more connection, which need not have come by the listener.
    void serve(const std::shared_ptr<ByteStream>& stream);
    /// Takes no more connections, and closes each one when its response or its backlog is sent.
    void close();
    /// The listening socket once more, for another server: it still listens when this one is closed.
    Descriptor duplicate() { return listener->duplicate(); }
    /// Closes the remaining connections at once.
    void closeNow();

    /// From now on `key` and cookies signed with `secret` are valid, and no others. WebSockets that are open are closed
    /// with 4401.
    void replaceKey(const std::string& key, const std::string& secret);

private:
    void accept(int descriptor);
    void makeRoom();
    HttpResponse respond(HttpConnection& connection, const HttpRequest& request) override;
    HttpResponse responseTo(HttpConnection& connection, const HttpRequest& request);
    HttpResponse openWebSocket(HttpConnection& connection, const HttpRequest& request);
    void upgrade(HttpConnection& connection, const HttpRequest& request) override;
    void remove(HttpConnection& connection) override;
    void remove(const ByteStream* stream, ClientListener& clientListener);
    void refuseConnection();

    EventLoop& loop;
    std::unique_ptr<TcpListener> listener;
    WebSite site;
    WebSocketRoute mainRoute;
    WebSocketRoutes routes;
    std::shared_ptr<Backlog> backlog;
    Turns turns;
    std::shared_ptr<WebSocketWriter> webSocketWriter;
    /// By their streams.
    std::unordered_map<const ByteStream*, std::shared_ptr<HttpConnection>> visitors;
    std::unordered_map<const ByteStream*, std::shared_ptr<WebSocketClient>> clients;
    WebConnections connections;
    EvictionReport evictions;
    bool closing = false;
};

}  // namespace SettingsHandlerKit
