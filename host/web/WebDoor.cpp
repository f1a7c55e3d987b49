#include "web/WebDoor.h"

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

#include "logging/HostLog.h"
#include "transport/DoorError.h"
#include "web/WebSocketClient.h"

namespace SettingsHost {

namespace {

constexpr std::size_t longestHeader = 4096;

constexpr const char* settingsProtocol = "settings.v1";
constexpr const char* deviceProtocol = "device.v1";

/// Which door a WebSocket opens at which path.
struct WebSocketRoute {
    const char* path;
    const char* protocol;
};
constexpr std::array<WebSocketRoute, 2> routes{{{"/settings", settingsProtocol}, {"/device", deviceProtocol}}};

/// Headers of every answer, the library's own refusals included.
const lws_protocol_vhost_options* securityHeaders() {
    static const std::array<std::pair<const char*, const char*>, 5> headers{{
        {"content-security-policy:",
         "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
         "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
        {"x-content-type-options:", "nosniff"},
        {"referrer-policy:", "no-referrer"},
        {"cross-origin-resource-policy:", "same-origin"},
        {"cache-control:", "no-store"},
    }};
    static const auto list = [] {
        std::array<lws_protocol_vhost_options, headers.size()> options{};
        for (std::size_t place = 0; place < headers.size(); ++place) {
            options[place].name = headers[place].first;
            options[place].value = headers[place].second;
            options[place].next = place + 1 < headers.size() ? &options[place + 1] : nullptr;
        }
        return options;
    }();
    return list.data();
}

std::optional<std::string> header(lws* connection, lws_token_indexes token) {
    const int length = lws_hdr_total_length(connection, token);
    if (length <= 0) {
        return std::nullopt;
    }
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    if (lws_hdr_copy(connection, text.data(), length + 1, token) < 0) {
        return std::nullopt;
    }
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::optional<std::string> argument(lws* connection, const char* nameAndSign) {
    std::array<char, longestHeader> buffer{};
    const char* const value =
        lws_get_urlarg_by_name(connection, nameAndSign, buffer.data(), static_cast<int>(buffer.size()));
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

WebVisitor visitorOf(lws* connection) {
    return {header(connection, WSI_TOKEN_HOST), header(connection, WSI_TOKEN_ORIGIN), argument(connection, "key="),
            header(connection, WSI_TOKEN_HTTP_COOKIE)};
}

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

bool isRead(lws* connection) {
    return lws_hdr_total_length(connection, WSI_TOKEN_GET_URI) > 0 ||
           lws_hdr_total_length(connection, WSI_TOKEN_HEAD_URI) > 0;
}

/// Adds the headers that every answer has to the one that turns a connection into a WebSocket.
bool addSecurityHeaders(lws* connection, lws_process_html_args& head) {
    auto* place = reinterpret_cast<unsigned char*>(head.p);
    unsigned char* const end = place + head.max_len;
    for (const auto* entry = securityHeaders(); entry != nullptr; entry = entry->next) {
        const std::string value = entry->value;
        if (lws_add_http_header_by_name(connection, reinterpret_cast<const unsigned char*>(entry->name),
                                        reinterpret_cast<const unsigned char*>(value.data()),
                                        static_cast<int>(value.size()), &place, end) != 0) {
            return false;
        }
    }
    head.p = reinterpret_cast<char*>(place);
    return true;
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
class WebDoor::Callbacks {
public:
    static int http(lws* connection, lws_callback_reasons reason, void* user, void* in, std::size_t size) {
        return guarded([&] { return httpEvent(connection, reason, user, in, size); });
    }

    template <Origin origin>
    static int webSocket(lws* connection, lws_callback_reasons reason, void* /*user*/, void* in, std::size_t size) {
        return guarded([&] {
            if (reason == LWS_CALLBACK_ADD_HEADERS) {
                return addSecurityHeaders(connection, *static_cast<lws_process_html_args*>(in)) ? 0 : 1;
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

    static WebDoor& doorOf(lws* connection) {
        return *static_cast<WebDoor*>(lws_context_user(lws_get_context(connection)));
    }

    static int httpEvent(lws* connection, lws_callback_reasons reason, void* user, void* in, std::size_t size) {
        switch (reason) {
            case LWS_CALLBACK_HTTP:
                return doorOf(connection).serveRequest(connection, static_cast<const char*>(in)) ? 0 : -1;
            case LWS_CALLBACK_HTTP_WRITEABLE:
                return doorOf(connection).continueAnswer(connection) ? 0 : -1;
            case LWS_CALLBACK_HTTP_CONFIRM_UPGRADE:
                return doorOf(connection).admitWebSocket(connection) ? 0 : 1;
            case LWS_CALLBACK_CLOSED_HTTP:
                doorOf(connection).exchanges.erase(connection);
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
        if (reason == LWS_CALLBACK_ESTABLISHED) {
            doorOf(connection).open(connection, origin);
            return 0;
        }
        if (reason != LWS_CALLBACK_RECEIVE && reason != LWS_CALLBACK_SERVER_WRITEABLE && reason != LWS_CALLBACK_TIMER &&
            reason != LWS_CALLBACK_CLOSED) {
            // Some come when the door is gone already.
            return 0;
        }
        const auto& clients = doorOf(connection).clients;
        const auto entry = clients.find(connection);
        if (entry == clients.end()) {
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
            default:
                doorOf(connection).remove(connection);
                return 0;
        }
    }
};

WebDoor::WebDoor(EventLoop& eventLoop, std::unique_ptr<TcpDoor> itsListener, WebSite itsSite,
                 DoorEvents eventsOfSettings, DoorEvents eventsOfDevice)
    : loop(eventLoop),
      listener(std::move(itsListener)),
      site(std::move(itsSite)),
      settingsEvents(std::move(eventsOfSettings)),
      deviceEvents(std::move(eventsOfDevice)) {
    createContext();
    listener->start(
        loop, [this](int descriptor) { adopt(descriptor); },
        [this](int /*descriptor*/) { settingsEvents.turnedAway(Origin::PAGE); });
}

WebDoor::~WebDoor() {
    close();
    closeNow();
}

void WebDoor::createContext() {
    lws_set_log_level(LLL_ERR | LLL_WARN, logLine);
    static const std::array<lws_protocols, 4> protocols{{
        {"http", Callbacks::http, 0, 0, 0, nullptr, 0},
        {settingsProtocol, Callbacks::webSocket<Origin::PAGE>, 0, 0, 0, nullptr, 0},
        {deviceProtocol, Callbacks::webSocket<Origin::DEVICE>, 0, 0, 0, nullptr, 0},
        {nullptr, nullptr, 0, 0, 0, nullptr, 0},
    }};
    const auto secondsUntilHangUp = static_cast<std::uint16_t>(2 * site.secondsOfPatience);
    liveness =
        std::make_unique<lws_retry_bo_t>(lws_retry_bo_t{nullptr, 0, 0, site.secondsOfPatience, secondsUntilHangUp, 0});
    void* foreignLoop = loop.handle();
    lws_context_creation_info info{};
    info.port = CONTEXT_PORT_NO_LISTEN_SERVER;
    info.protocols = protocols.data();
    info.headers = securityHeaders();
    info.options = LWS_SERVER_OPTION_LIBUV | LWS_SERVER_OPTION_EXPLICIT_VHOSTS;
    info.foreign_loops = &foreignLoop;
    info.user = this;
    info.server_string = "settings-host";
    info.retry_and_idle_policy = liveness.get();
    info.timeout_secs = site.secondsOfPatience;
    info.timeout_secs_ah_idle = site.secondsOfPatience;
    info.keepalive_timeout = site.secondsOfPatience;
    info.max_http_header_data2 = longestHeader;
    info.fd_limit_per_thread = maximumClients;
    context = lws_create_context(&info);
    vhost = context == nullptr ? nullptr : lws_create_vhost(context, &info);
    if (vhost == nullptr) {
        throw DoorError("cannot start the web server");
    }
}

void WebDoor::adopt(int descriptor) {
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &kernelBuffer, sizeof(kernelBuffer));
    // Closes the descriptor when there is no room for one more.
    if (lws_adopt_socket_vhost(vhost, descriptor) == nullptr) {
        settingsEvents.turnedAway(Origin::PAGE);
    }
}

HttpAnswer WebDoor::answerFor(lws* connection, const std::string& path) const {
    const WebVisitor visitor = visitorOf(connection);
    if (!site.access.isFromHere(visitor)) {
        return plainAnswer(HTTP_STATUS_FORBIDDEN, "This address or page may not ask this host.");
    }
    const auto endpoint = site.endpoints.find(path);
    if (endpoint != site.endpoints.end() && isRead(connection)) {
        return endpoint->second();
    }
    if (!site.access.isAdmitted(visitor)) {
        return plainAnswer(HTTP_STATUS_FORBIDDEN,
                           "The key is missing or old. \"settingsctl page\" prints the address.");
    }
    if (!isRead(connection)) {
        return plainAnswer(HTTP_STATUS_METHOD_NOT_ALLOWED, "Pages can be read only.");
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

bool WebDoor::serveRequest(lws* connection, const std::string& path) {
    const bool withBody = lws_hdr_total_length(connection, WSI_TOKEN_HEAD_URI) <= 0;
    exchanges.erase(connection);
    auto& exchange =
        exchanges.emplace(connection, HttpExchange(connection, answerFor(connection, path), withBody)).first->second;
    if (!exchange.begin()) {
        return false;
    }
    if (!isRead(connection)) {
        // The library would take the rest of the request first, which may never come.
        exchange.proceed();
        return false;
    }
    if (exchange.isDone()) {
        return lws_http_transaction_completed(connection) == 0;
    }
    lws_callback_on_writable(connection);
    return true;
}

bool WebDoor::continueAnswer(lws* connection) {
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

bool WebDoor::admitWebSocket(lws* connection) {
    const WebVisitor visitor = visitorOf(connection);
    const std::string path = header(connection, WSI_TOKEN_GET_URI).value_or("");
    const std::string protocols = header(connection, WSI_TOKEN_PROTOCOL).value_or("");
    HttpAnswer refusal;
    if (closing || !site.access.isFromHere(visitor) || !site.access.isAdmitted(visitor)) {
        refusal = plainAnswer(HTTP_STATUS_FORBIDDEN, "The key is missing or old, or this page may not connect.");
    } else {
        for (const auto& route : routes) {
            if (path == route.path && chosenProtocol(protocols) == route.protocol) {
                return true;
            }
        }
        refusal =
            plainAnswer(HTTP_STATUS_BAD_REQUEST,
                        "WebSockets are at /settings with subprotocol settings.v1 and at /device with device.v1.");
    }
    HttpExchange exchange(connection, refusal, true);
    exchange.begin() && exchange.proceed();
    return false;
}

void WebDoor::open(lws* connection, Origin origin) {
    const auto client =
        std::make_shared<WebSocketClient>(connection, origin, origin == Origin::PAGE ? settingsEvents : deviceEvents);
    clients.emplace(connection, client);
    client->arrived();
}

void WebDoor::remove(lws* connection) {
    const auto entry = clients.find(connection);
    const std::shared_ptr<WebSocketClient> client = entry->second;
    clients.erase(entry);
    client->left();
    if (closing && clients.empty()) {
        // Not from inside the library's own call.
        loop.later([this, self = std::weak_ptr<int>(alive)] {
            if (!self.expired()) {
                closeNow();
            }
        });
    }
}

void WebDoor::close() {
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

void WebDoor::closeNow() {
    if (context != nullptr) {
        lws_context* const ending = std::exchange(context, nullptr);
        lws_context_destroy(ending);
        // On a loop of somebody else's, the library leaves the last step until all its handles are gone.
        loop.atEnd([ending] { lws_context_destroy(ending); });
    }
}

}  // namespace SettingsHost
