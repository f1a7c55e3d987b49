#include "server/web/WebServer.h"

#include <chrono>
#include <exception>
#include <string>
#include <utility>

#include <sys/socket.h>

#include "SettingsHandlerKit/Logging.h"
#include "Wire/FrameInspector.h"
#include "server/sockets/ListenerLimits.h"
#include "server/sockets/SocketStream.h"
#include "server/web/WebSocketClient.h"
#include "server/web/WebSocketHandshake.h"

namespace SettingsHandlerKit {

WebServer::WebServer(EventLoop& eventLoop, std::unique_ptr<TcpListener> itsListener, WebSite itsSite,
                     std::vector<WebSocketRoute> itsRoutes, std::shared_ptr<Backlog> backlogOfAll)
    : loop(eventLoop),
      listener(std::move(itsListener)),
      site(std::move(itsSite)),
      mainRoute(itsRoutes.front()),
      routes(std::move(itsRoutes)),
      backlog(std::move(backlogOfAll)),
      turns(loop),
      webSocketWriter(std::make_shared<WebSocketWriter>()),
      evictions(loop, [](std::size_t count) {
          writeLog(VessaLogger::WARNING,
                   "web: unauthenticated connections closed to make room for others: " + std::to_string(count));
      }) {
    if (listener) {
        listener->start(
            loop, [this](int descriptor) { accept(descriptor); }, [this](int /*descriptor*/) { refuseConnection(); });
    }
}

WebServer::~WebServer() {
    close();
    closeNow();
    for (const auto& entry : clients) {
        entry.second->detach();
    }
}

void WebServer::accept(int descriptor) {
    Descriptor socket(descriptor);
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &kernelBuffer, sizeof(kernelBuffer));
    // Room in the system, too.
    makeRoom();
    if (const auto stream = SocketStream::open(loop, std::move(socket))) {
        serve(stream);
    } else {
        refuseConnection();
    }
}

void WebServer::serve(const std::shared_ptr<ByteStream>& stream) {
    makeRoom();
    if (!connections.haveRoom()) {
        stream->close();
        refuseConnection();
        return;
    }
    connections.opened(stream.get());
    HttpConnection::Server& server = *this;
    const auto visitor =
        std::make_shared<HttpConnection>(loop, turns, stream, std::chrono::seconds(site.timeoutSeconds), server);
    visitors.emplace(stream.get(), visitor);
    visitor->start();
}

/// Closes the oldest unauthenticated connections, each after what it has sent was read: a page that has just sent its
/// key stays.
void WebServer::makeRoom() {
    while (!connections.haveRoom() && connections.oldestUnauthenticated() != nullptr) {
        const ByteStream* const oldest = connections.oldestUnauthenticated();
        const auto visitor = visitors.at(oldest);
        visitor->respondToWhatCame();
        if (connections.isUnauthenticated(oldest)) {
            connections.closed(oldest);
            visitor->close();
            refuseConnection();
            evictions.connectionEvicted();
        }
    }
}

/// No exception may pass through the event loop.
HttpResponse WebServer::respond(HttpConnection& connection, const HttpRequest& request) {
    try {
        return responseTo(connection, request);
    } catch (const std::exception& error) {
        writeLog(VessaLogger::ERROR, std::string("web: closed a connection: ") + error.what());
        connection.close();
        return plainResponse(500, "");
    }
}

HttpResponse WebServer::responseTo(HttpConnection& connection, const HttpRequest& request) {
    if (request.asksForWebSocket) {
        return openWebSocket(connection, request);
    }
    if (!site.access.isFromHere(request.visitor)) {
        return plainResponse(403, "Host or Origin not allowed");
    }
    const bool isAdmitted = site.access.isAdmitted(request.visitor);
    if (isAdmitted) {
        connections.authenticate(connection.byteStream().get());
    }
    return site.responseTo(request.visitor, isAdmitted, request.path, request.isRead);
}

HttpResponse WebServer::openWebSocket(HttpConnection& connection, const HttpRequest& request) {
    if (closing || !site.access.isFromHere(request.visitor) || !site.access.isAdmitted(request.visitor)) {
        return plainResponse(403, "The key is missing or old, or Host or Origin is not allowed.");
    }
    connections.authenticate(connection.byteStream().get());
    const WebSocketRoute* const route = routes.find(request.path, request.webSocketProtocols);
    if (route == nullptr) {
        return plainResponse(400, routes.help());
    }
    return webSocketHandshake(request, route->protocol);
}

void WebServer::upgrade(HttpConnection& connection, const HttpRequest& request) {
    const WebSocketRoute& route = *routes.find(request.path, request.webSocketProtocols);
    ClientListener& clientListener = route.clients;
    const auto& stream = connection.byteStream();
    StreamClient::Place place{
        clientListener,
        turns,
        backlog,
        route.origin,
        ListenerKind::WEB,
        [this, key = stream.get(), &clientListener](StreamClient& /*gone*/) { remove(key, clientListener); }};
    const auto client = std::make_shared<WebSocketClient>(
        loop, stream,
        std::make_shared<WebSocketFraming>(Wire::maximumFrameSize, webSocketWriter, connection.takeInput()),
        std::move(place), std::chrono::seconds(site.timeoutSeconds));
    clients.emplace(stream.get(), client);
    visitors.erase(stream.get());
    client->start();
}

void WebServer::remove(HttpConnection& connection) {
    const ByteStream* const stream = connection.byteStream().get();
    connections.closed(stream);
    visitors.erase(stream);
}

void WebServer::remove(const ByteStream* stream, ClientListener& clientListener) {
    const auto entry = clients.find(stream);
    const std::shared_ptr<WebSocketClient> client = entry->second;
    clients.erase(entry);
    connections.closed(stream);
    clientListener.disconnected(client, client->disconnectReason());
}

void WebServer::refuseConnection() {
    mainRoute.clients.get().refused(mainRoute.origin);
}

void WebServer::close() {
    if (closing) {
        return;
    }
    closing = true;
    if (listener) {
        listener->close();
    }
    turns.close();
    for (const auto& entry : visitors) {
        entry.second->finish();
    }
    for (const auto& entry : clients) {
        entry.second->stop();
    }
}

void WebServer::closeNow() {
    for (const auto& entry : visitors) {
        entry.second->close();
    }
    for (const auto& entry : clients) {
        entry.second->drop();
    }
}

void WebServer::replaceKey(const std::string& key, const std::string& secret) {
    site.access.replace(key, secret);
    connections.forgetAuthentication([this](const ByteStream* stream) { return clients.count(stream) != 0; });
    for (const auto& entry : clients) {
        entry.second->revoke();
    }
}

}  // namespace SettingsHandlerKit
