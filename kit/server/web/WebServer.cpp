#include "server/web/WebServer.h"

#include <array>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include <libwebsockets.h>
#include <sys/socket.h>
#include <unistd.h>

#include "server/sockets/ListenerError.h"
#include "server/sockets/ListenerLimits.h"
#include "server/web/SecurityHeaders.h"
#include "server/web/WebRequest.h"
#include "server/web/WebSocketClient.h"
#include "server/web/WebSocketRoutes.h"
#include "service/logging/HostLog.h"

namespace SettingsHandlerKit {

namespace {

/// At trace level only, because any program of this machine can cause errors and warnings of the library.
void logLine(int /*level*/, const char* line) {
    std::string text(line);
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    logHost(VessaLogger::TRACE, "web: " + text);
}

}  // namespace

/// The callbacks of libwebsockets. No exception may pass through them.
class WebServer::Callbacks {
public:
    static int http(lws* connection, lws_callback_reasons reason, void* user, void* in, std::size_t size) {
        return guarded([&] { return httpEvent(connection, reason, user, in, size); });
    }

    template <Origin origin>
    static int webSocket(lws* connection, lws_callback_reasons reason, void* /*user*/, void* in, std::size_t size) {
        return guarded([&] {
            if (reason == LWS_CALLBACK_ADD_HEADERS) {
                return addSecurityHeaders(connection, in) ? 0 : 1;
            }
            return webSocketEvent(connection, reason, origin, static_cast<const char*>(in), size);
        });
    }

private:
    template <typename Action>
    static int guarded(const Action& action) {
        try {
            return action();
        } catch (const std::exception& error) {
            logHost(VessaLogger::ERROR, std::string("web: closed a connection: ") + error.what());
            return -1;
        }
    }

    /// Null when the server is gone: connections are destroyed in the next turn of the loop.
    static WebServer* serverOf(lws* connection) {
        return static_cast<Self*>(lws_context_user(lws_get_context(connection)))->server;
    }

    static int httpEvent(lws* connection, lws_callback_reasons reason, void* user, void* in, std::size_t size) {
        WebServer* const server = serverOf(connection);
        if (server == nullptr) {
            return 0;
        }
        switch (reason) {
            case LWS_CALLBACK_HTTP:
                return server->serveRequest(connection, static_cast<const char*>(in)) ? 0 : -1;
            case LWS_CALLBACK_HTTP_WRITEABLE:
                return server->continueAnswer(connection) ? 0 : -1;
            case LWS_CALLBACK_HTTP_CONFIRM_UPGRADE:
                return server->admitWebSocket(connection) ? 0 : 1;
            case LWS_CALLBACK_CLOSED_HTTP:
                server->exchanges.erase(connection);
                return 0;
            case LWS_CALLBACK_WSI_DESTROY:
                server->connections.closed(connection);
                return 0;
            case LWS_CALLBACK_FILTER_PROTOCOL_CONNECTION:
                // WebSockets have their own protocols.
                return -1;
            default:
                return lws_callback_http_dummy(connection, reason, user, in, size);
        }
    }

    static int webSocketEvent(lws* connection, lws_callback_reasons reason, Origin origin, const char* in,
                              std::size_t size) {
        WebServer* const server = serverOf(connection);
        if (server == nullptr) {
            return 0;
        }
        if (reason == LWS_CALLBACK_ESTABLISHED) {
            server->open(connection, origin);
            return 0;
        }
        const auto entry = server->clients.find(connection);
        if (entry == server->clients.end()) {
            return 0;
        }
        const std::shared_ptr<WebSocketClient> client = entry->second;
        switch (reason) {
            case LWS_CALLBACK_RECEIVE:
                return client->received(in, size) ? 0 : -1;
            case LWS_CALLBACK_SERVER_WRITEABLE:
                return client->writable() ? 0 : -1;
            case LWS_CALLBACK_TIMER:
                return client->timerExpired() ? 0 : -1;
            case LWS_CALLBACK_WS_PEER_INITIATED_CLOSE:
                client->peerCloses();
                return 0;
            case LWS_CALLBACK_CLOSED:
                server->remove(connection);
                return 0;
            default:
                return 0;
        }
    }
};

WebServer::WebServer(EventLoop& eventLoop, std::unique_ptr<TcpListener> itsListener, WebSite itsSite,
                     ClientListener& settingsListener, ClientListener& deviceListener,
                     std::shared_ptr<Backlog> backlogOfAll)
    : loop(eventLoop),
      listener(std::move(itsListener)),
      site(std::move(itsSite)),
      settingsClients(settingsListener),
      deviceClients(deviceListener),
      backlog(std::move(backlogOfAll)),
      evictions(loop, [](std::size_t count) {
          logHost(VessaLogger::WARNING,
                  "web: connections without key or cookie closed to make room for others: " + std::to_string(count));
      }) {
    createContext();
    listener->start(
        loop, [this](int descriptor) { adopt(descriptor); },
        [this](int /*descriptor*/) { settingsClients.refused(Origin::PAGE); });
}

WebServer::~WebServer() {
    close();
    closeNow();
    self->server = nullptr;
}

void WebServer::createContext() {
    lws_set_log_level(LLL_ERR | LLL_WARN, logLine);
    static const std::array<lws_protocols, 4> protocols{{
        {"http", Callbacks::http, 0, 0, 0, nullptr, 0},
        {settingsRoute.protocol, Callbacks::webSocket<settingsRoute.origin>, 0, 0, 0, nullptr, 0},
        {deviceRoute.protocol, Callbacks::webSocket<deviceRoute.origin>, 0, 0, 0, nullptr, 0},
        {nullptr, nullptr, 0, 0, 0, nullptr, 0},
    }};
    const auto secondsUntilHangUp = static_cast<std::uint16_t>(2 * site.timeoutSeconds);
    liveness =
        std::make_unique<lws_retry_bo_t>(lws_retry_bo_t{nullptr, 0, 0, site.timeoutSeconds, secondsUntilHangUp, 0});
    void* foreignLoop = loop.handle();
    lws_context_creation_info info{};
    info.port = CONTEXT_PORT_NO_LISTEN_SERVER;
    info.protocols = protocols.data();
    info.headers = securityHeaders();
    info.options = LWS_SERVER_OPTION_LIBUV | LWS_SERVER_OPTION_EXPLICIT_VHOSTS;
    info.foreign_loops = &foreignLoop;
    info.user = self.get();
    info.server_string = "settings-host";
    info.retry_and_idle_policy = liveness.get();
    info.timeout_secs = site.timeoutSeconds;
    info.timeout_secs_ah_idle = site.timeoutSeconds;
    info.keepalive_timeout = site.timeoutSeconds;
    info.max_http_header_data2 = longestWebRequest;
    // The server itself counts connections. The library also counts those that are closing, and a descriptor of its
    // own.
    info.fd_limit_per_thread = 2 * maximumClients;
    context = lws_create_context(&info);
    vhost = context == nullptr ? nullptr : lws_create_vhost(context, &info);
    if (vhost == nullptr) {
        throw ListenerError("cannot start the web server");
    }
}

void WebServer::adopt(int descriptor) {
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &kernelBuffer, sizeof(kernelBuffer));
    makeRoom();
    if (!connections.haveRoom()) {
        ::close(descriptor);
        settingsClients.refused(Origin::PAGE);
        return;
    }
    // Closes the descriptor when it fails.
    lws* const connection = lws_adopt_socket_vhost(vhost, descriptor);
    if (connection == nullptr) {
        settingsClients.refused(Origin::PAGE);
        return;
    }
    connections.opened(connection);
}

/// Closes the oldest unauthenticated connections, each after what it has sent was read: a page that has just sent its
/// key stays.
void WebServer::makeRoom() {
    bool wasRead = false;
    while (!connections.haveRoom() && connections.oldestUnauthenticated() != nullptr) {
        lws* const oldest = connections.oldestUnauthenticated();
        wasRead = readWhatCame(oldest) || wasRead;
        if (connections.isUnauthenticated(oldest)) {
            connections.closed(oldest);
            drop(oldest);
            settingsClients.refused(Origin::PAGE);
            evictions.connectionEvicted();
        }
    }
    if (wasRead) {
        // Data behind a request waits for the library's own turn.
        lws_cancel_service(context);
    }
}

/// Has the library read what an unauthenticated connection sent, at most as much as the longest request. Returns:
/// whether there was something.
bool WebServer::readWhatCame(lws* connection) {
    const auto descriptor = lws_get_socket_fd(connection);
    const auto somethingCame = [&] {
        char first = '\0';
        return ::recv(descriptor, &first, 1, MSG_PEEK | MSG_DONTWAIT) == 1;
    };
    // It reads up to 4 KiB at a time.
    int reads = 0;
    for (; reads < 2 && connections.isUnauthenticated(connection) && somethingCame(); ++reads) {
        lws_pollfd readable{descriptor, LWS_POLLIN, LWS_POLLIN};
        lws_service_fd(context, &readable);
    }
    return reads > 0;
}

/// Closes a connection that is not a WebSocket.
void WebServer::drop(lws* connection) {
    if (lws_partial_buffered(connection) != 0) {
        // The library would wait for seconds until the rest of an answer is read.
        ::shutdown(lws_get_socket_fd(connection), SHUT_RDWR);
    }
    lws_set_timeout(connection, PENDING_TIMEOUT_USER_REASON_BASE, LWS_TO_KILL_SYNC);
}

HttpAnswer WebServer::answerFor(lws* connection, const std::string& path) {
    const WebVisitor visitor = visitorOf(connection);
    if (!site.access.isFromHere(visitor)) {
        return plainAnswer(HTTP_STATUS_FORBIDDEN, "Host or Origin not allowed");
    }
    const bool isAdmitted = site.access.isAdmitted(visitor);
    if (isAdmitted) {
        connections.authenticate(connection);
    }
    return site.answer(visitor, isAdmitted, path, isRead(connection));
}

bool WebServer::serveRequest(lws* connection, const std::string& path) {
    const bool withBody = !isHead(connection);
    exchanges.erase(connection);
    auto& exchange =
        exchanges.emplace(connection, HttpExchange(connection, answerFor(connection, path), withBody)).first->second;
    if (!exchange.begin()) {
        return false;
    }
    if (!isRead(connection)) {
        // The library would wait for the rest of the request, which may never come.
        return false;
    }
    if (exchange.isDone()) {
        return lws_http_transaction_completed(connection) == 0;
    }
    lws_callback_on_writable(connection);
    return true;
}

bool WebServer::continueAnswer(lws* connection) {
    const auto entry = exchanges.find(connection);
    if (entry == exchanges.end()) {
        return true;
    }
    if (!entry->second.proceed()) {
        return false;
    }
    if (!entry->second.isDone()) {
        lws_callback_on_writable(connection);
        return true;
    }
    exchanges.erase(entry);
    return lws_http_transaction_completed(connection) == 0;
}

bool WebServer::admitWebSocket(lws* connection) {
    const WebVisitor visitor = visitorOf(connection);
    HttpAnswer refusal;
    if (closing || !site.access.isFromHere(visitor) || !site.access.isAdmitted(visitor)) {
        refusal = plainAnswer(HTTP_STATUS_FORBIDDEN, "The key is missing or old, or Host or Origin is not allowed.");
    } else {
        connections.authenticate(connection);
        if (isWebSocketRoute(requestedPath(connection), offeredProtocols(connection))) {
            return true;
        }
        refusal =
            plainAnswer(HTTP_STATUS_BAD_REQUEST,
                        "WebSockets are at /settings with subprotocol settings.v1 and at /device with device.v1.");
    }
    HttpExchange(connection, refusal, true).begin();
    return false;
}

void WebServer::open(lws* connection, Origin origin) {
    const auto client = std::make_shared<WebSocketClient>(
        connection, origin, origin == settingsRoute.origin ? settingsClients : deviceClients, backlog);
    clients.emplace(connection, client);
    client->opened();
}

void WebServer::remove(lws* connection) {
    const auto entry = clients.find(connection);
    const std::shared_ptr<WebSocketClient> client = entry->second;
    clients.erase(entry);
    client->closed();
    if (closing && clients.empty()) {
        // Not from inside the library's callback.
        loop.later([itself = self] {
            if (itself->server != nullptr) {
                itself->server->closeNow();
            }
        });
    }
}

void WebServer::close() {
    if (closing) {
        return;
    }
    closing = true;
    listener->close();
    if (clients.empty()) {
        closeNow();
    }
    for (const auto& entry : clients) {
        entry.second->finish();
    }
}

void WebServer::closeNow() {
    if (context != nullptr) {
        lws_context* const ending = std::exchange(context, nullptr);
        lws_context_destroy(ending);
        // On a foreign loop, the library leaves the last step until all its handles are gone.
        loop.atEnd([ending, user = self] { lws_context_destroy(ending); });
    }
}

void WebServer::replaceKey(const std::string& key, const std::string& secret) {
    site.access.replace(key, secret);
    connections.forgetAuthentication([this](lws* authenticated) { return clients.count(authenticated) != 0; });
    for (const auto& entry : clients) {
        entry.second->revoke();
    }
    if (context != nullptr) {
        lws_cancel_service(context);
    }
}

}  // namespace SettingsHandlerKit
