#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>

#include "server/loop/EventLoop.h"
#include "server/sockets/ListenerEvents.h"
#include "server/sockets/TcpListener.h"
#include "server/web/EvictionReport.h"
#include "server/web/HttpAnswer.h"
#include "server/web/PageFiles.h"
#include "server/web/WebAccess.h"
#include "server/web/WebConnections.h"

struct lws;
struct lws_context;
struct lws_vhost;
struct lws_retry_bo;

namespace SettingsHost {

class WebSocketClient;

/// What the web port has to offer.
struct WebSite {
    WebAccess access;
    PageFiles pages;
    /// Paths that need no key, such as "/healthz", and what answers them.
    std::map<std::string, std::function<HttpAnswer()>> endpoints;
    /// How long the other side may take: to send a request, and to read its answer. A WebSocket from which nothing
    /// comes for so long is pinged, and dropped when nothing comes for as long again.
    std::uint16_t timeoutSeconds = 15;
};

/// The web port: pages and figures by HTTP, and two WebSockets with one frame a text message.
///
/// - `/settings`, subprotocol `settings.v1`: what the settings socket speaks, for clients of origin PAGE.
/// - `/device`, subprotocol `device.v1`: what the device socket speaks, for clients of origin DEVICE.
///
/// The limits of ListenerEvents.h hold. A message over the frame limit closes its connection with 1009, a binary one
/// with 1003. Of connections of any kind `maximumClients` are served at a time, of them
/// `WebConnections::maximumUnauthenticated` that have shown neither key nor cookie. For a new one the oldest of those
/// is closed, after what it has sent was read; when there is none, the new one.
///
/// One thread only. The event loop outlives it, and runs once more after `closeNow`.
class WebServer {
public:
    /// Errors: `ListenerError`.
    WebServer(EventLoop& loop, std::unique_ptr<TcpListener> listener, WebSite site, ListenerEvents settingsEvents,
              ListenerEvents deviceEvents);
    ~WebServer();

    WebServer(const WebServer&) = delete;
    WebServer& operator=(const WebServer&) = delete;

    /// Takes no more connections, and closes each WebSocket when what waits for it is sent.
    void close();
    /// Closes the connections that are left at once.
    void closeNow();

    /// From now on `key` and cookies signed with `secret` open the server. WebSockets that came with what did so before
    /// are closed with 4401.
    void replaceKey(const std::string& key, const std::string& secret);

private:
    class Callbacks;
    /// What the library and what was put off know of the server, as long as there is one.
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
    ListenerEvents settingsEvents;
    ListenerEvents deviceEvents;
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

}  // namespace SettingsHost
