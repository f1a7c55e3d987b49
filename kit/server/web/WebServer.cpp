#include "server/web/WebServer.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <libwebsockets.h>
#include <sys/socket.h>
#include <unistd.h>

#include "server/sockets/ListenerError.h"
#include "server/web/SecurityHeaders.h"
#include "server/web/WebRequest.h"
#include "server/web/WebSocketClient.h"
#include "service/logging/HostLog.h"

namespace SettingsHost {

namespace {

constexpr const char* settingsProtocol = "settings.v1";
constexpr const char* deviceProtocol = "device.v1";

/// Which server a WebSocket opens at which path.
struct WebSocketRoute {
    const char* path;
    const char* protocol;
};
constexpr std::array<WebSocketRoute, 2> routes{{{"/settings", settingsProtocol}, {"/device", deviceProtocol}}};

/// The one that the library chooses of the subprotocols that a client offers: the first that is ours.
std::string chosenProtocol(const std::string& offered) {
    std::istringstream list(offered);
    for (std::string name; std::getline(list, name, ',');) {
        name.erase(0, std::min(name.find_first_not_of(' '), name.size()));
        for (const auto& route : routes) {
            if (name == route.protocol) {
                return name;
            }
        }
    }
    return "";
}

/// Anybody on this machine can make the library complain, so that it does so in a whisper.
void logLine(int /*level*/, const char* line) {
    std::string text(line);
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    logHost(VessaLogger::TRACE, "web: " + text);
}

}  // namespace

/// What libwebsockets calls. No exception may pass through it.
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
            logHost(VessaLogger::ERROR, std::string("web: a connection was closed: ") + error.what());
            return -1;
        }
    }

    /// Null when it is gone already: connections are let go of in the next turn of the loop.
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
                server->connections.left(connection);
                return 0;
            case LWS_CALLBACK_FILTER_PROTOCOL_CONNECTION:
                // WebSockets have protocols of their own.
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
                     ListenerEvents eventsOfSettings, ListenerEvents eventsOfDevice)
    : loop(eventLoop),
      listener(std::move(itsListener)),
      site(std::move(itsSite)),
      settingsEvents(std::move(eventsOfSettings)),
      deviceEvents(std::move(eventsOfDevice)),
      evictions(loop, [](std::size_t count) {
          logHost(VessaLogger::WARNING,
                  "web: connections without key or cookie closed to make room for others: " + std::to_string(count));
      }) {
    createContext();
    listener->start(
        loop, [this](int descriptor) { adopt(descriptor); },
        [this](int /*descriptor*/) { settingsEvents.refused(Origin::PAGE); });
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
        {settingsProtocol, Callbacks::webSocket<Origin::PAGE>, 0, 0, 0, nullptr, 0},
        {deviceProtocol, Callbacks::webSocket<Origin::DEVICE>, 0, 0, 0, nullptr, 0},
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
    // The server counts itself. The library counts connections that are on their way out, and a descriptor of its own.
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
        settingsEvents.refused(Origin::PAGE);
        return;
    }
    // Closes the descriptor when it fails.
    lws* const connection = lws_adopt_socket_vhost(vhost, descriptor);
    if (connection == nullptr) {
        settingsEvents.refused(Origin::PAGE);
        return;
    }
    connections.arrived(connection);
}

/// The oldest unauthenticated connections are closed, each after what it has sent was read: a page that has just sent
/// its key stays.
void WebServer::makeRoom() {
    bool wasRead = false;
    while (!connections.haveRoom() && connections.oldestUnauthenticated() != nullptr) {
        lws* const oldest = connections.oldestUnauthenticated();
        wasRead = readWhatCame(oldest) || wasRead;
        if (connections.isUnauthenticated(oldest)) {
            connections.left(oldest);
            drop(oldest);
            settingsEvents.refused(Origin::PAGE);
            evictions.connectionEvicted();
        }
    }
    if (wasRead) {
        // What came behind a request waits for the library's own turn.
        lws_cancel_service(context);
    }
}

/// Has the library read what an unauthenticated connection sent, no more than a request may be long. Returns: whether
/// there was something.
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
        return plainAnswer(HTTP_STATUS_FORBIDDEN, "This address or page may not ask this host.");
    }
    const bool isAdmitted = site.access.isAdmitted(visitor);
    if (isAdmitted) {
        connections.authenticate(connection);
    }
    const auto endpoint = site.endpoints.find(path);
    if (endpoint != site.endpoints.end() && isRead(connection)) {
        return endpoint->second();
    }
    if (!isAdmitted) {
        return plainAnswer(HTTP_STATUS_FORBIDDEN,
                           "The key is missing or old. \"settingsctl page\" prints the address.");
    }
    if (!isRead(connection)) {
        return plainAnswer(HTTP_STATUS_METHOD_NOT_ALLOWED, "Pages can be read only.");
    }
    if (site.pages.isEmpty() && (path == "/" || path == "/device")) {
        HttpAnswer answer = howToGetPages();
        answer.cookie = site.access.cookieFor(visitor);
        return answer;
    }
    const PageFile* const file = site.pages.find(path);
    if (file == nullptr) {
        return plainAnswer(HTTP_STATUS_NOT_FOUND, "There is no such page.");
    }
    HttpAnswer answer;
    answer.contentType = file->contentType;
    answer.body = file->content;
    answer.cookie = site.access.cookieFor(visitor);
    return answer;
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
        // The library would take the rest of the request first, which may never come.
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
    const std::string path = requestedPath(connection);
    const std::string protocols = offeredProtocols(connection);
    HttpAnswer refusal;
    if (closing || !site.access.isFromHere(visitor) || !site.access.isAdmitted(visitor)) {
        refusal = plainAnswer(HTTP_STATUS_FORBIDDEN, "The key is missing or old, or this page may not connect.");
    } else {
        connections.authenticate(connection);
        for (const auto& route : routes) {
            if (path == route.path && chosenProtocol(protocols) == route.protocol) {
                return true;
            }
        }
        refusal =
            plainAnswer(HTTP_STATUS_BAD_REQUEST,
                        "WebSockets are at /settings with subprotocol settings.v1 and at /device with device.v1.");
    }
    HttpExchange(connection, refusal, true).begin();
    return false;
}

void WebServer::open(lws* connection, Origin origin) {
    const auto client =
        std::make_shared<WebSocketClient>(connection, origin, origin == Origin::PAGE ? settingsEvents : deviceEvents);
    clients.emplace(connection, client);
    client->arrived();
}

void WebServer::remove(lws* connection) {
    const auto entry = clients.find(connection);
    const std::shared_ptr<WebSocketClient> client = entry->second;
    clients.erase(entry);
    client->left();
    if (closing && clients.empty()) {
        // Not from inside the library's own call.
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
        // On a loop of somebody else's, the library leaves the last step until all its handles are gone.
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

}  // namespace SettingsHost
