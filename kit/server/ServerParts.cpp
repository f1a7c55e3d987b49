#include "server/ServerParts.h"

#include <exception>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "SettingsHandlerKit/Logging.h"
#include "server/Hexadecimal.h"
#include "server/web/WebAccess.h"
#include "server/web/WebAddress.h"
#include "server/web/WebSite.h"

namespace SettingsHandlerKit {

namespace {

constexpr std::size_t keyBytes = 16;
constexpr std::size_t secretBytes = 32;

/// The name of the secret that signs cookies. Not "browserSecret": older software gave that one to browsers.
constexpr const char* secretName = "cookieSecret";
/// Where it is stored.
constexpr const char* webTable = "web";

std::unique_ptr<TcpListener> openWebListener(ServerOptions& options) {
    if (!options.listen) {
        return nullptr;
    }
    if (auto passed = options.sockets.take("web")) {
        return std::make_unique<TcpListener>(std::move(*passed));
    }
    const WebAddress address = parseWebAddress(*options.listen);
    return std::make_unique<TcpListener>(address.address, address.port);
}

PageFiles pagesIn(const ServerOptions& options) {
    return options.listen && !options.pagesFolder.empty() ? PageFiles(options.pagesFolder) : PageFiles();
}

std::unique_ptr<SocketFile> openSocket(const std::string& name, const std::optional<std::string>& path,
                                       PassedSockets& sockets) {
    const bool isOwn = sockets.isOwn(name);
    if (auto passed = sockets.take(name)) {
        return std::make_unique<SocketFile>(std::move(*passed), isOwn);
    }
    if (!path) {
        return nullptr;
    }
    if (path->empty()) {
        throw ListenerError("no path is set for the Unix socket of '" + name + "'");
    }
    return std::make_unique<SocketFile>(*path);
}

/// Nothing when the system does not say.
std::optional<Wire::StatusReply::Disk> diskOf(const std::string& file) {
    std::error_code failure;
    const auto space = std::filesystem::space(std::filesystem::path(file).parent_path(), failure);
    if (failure) {
        return std::nullopt;
    }
    return Wire::StatusReply::Disk{space.available, space.capacity};
}

/// After a log-out, however it was asked for, nobody learns what happened before it.
class HistoryEraser : public StorageObserver {
public:
    explicit HistoryEraser(std::shared_ptr<MessageHub> hubWithHistory) : hub(std::move(hubWithHistory)) {}

    void storageOperation(StorageOperation operation, bool succeeded, std::chrono::nanoseconds /*duration*/) override {
        if (operation == StorageOperation::CLEAR && succeeded) {
            hub->forgetHistory();
        }
    }

private:
    std::shared_ptr<MessageHub> hub;
};

HttpResponse metricsResponse(const std::string& text) {
    HttpResponse response = plainResponse(200, text);
    response.contentType = "text/plain; version=0.0.4; charset=utf-8";
    return response;
}

ServerOptions checked(ServerOptions options) {
    if (!options.allowedOrigin.empty()) {
        checkAllowedOrigin(options.allowedOrigin);
    }
    if (options.version.empty()) {
        options.version = SETTINGS_HANDLER_VERSION;
    }
    return options;
}

}  // namespace

void checkListenAddress(const std::string& text) {
    parseWebAddress(text);
}

void checkAllowedOrigin(const std::string& text) {
    if (!isOrigin(text)) {
        throw std::invalid_argument("'" + text + "' is not an origin such as http://localhost:5173");
    }
}

Server::Parts::Parts(ServerOptions chosenOptions)
    : options(checked(std::move(chosenOptions))),
      delays(loop),
      webListener(openWebListener(options)),
      pages(pagesIn(options)),
      traffic(std::make_shared<TrafficObservers>()),
      backlog(std::make_shared<Backlog>()),
      hub(std::make_shared<MessageHub>(traffic, options.context, backlog, options.environment)),
      settingsClients(options.between ? options.between(hub) : hub),
      transactions(std::make_shared<StoredTransactions>(
          *hub, [this](std::function<void()> action) { loop.later(std::move(action)); })),
      metrics(std::make_shared<ServerMetrics>(options.version)),
      health(options.version, {}) {
    traffic->add(metrics);
    hub->administer(*this);
    addEndpoint("settings", options.socketPath, Origin::SOCKET, *settingsClients);
}

void Server::Parts::watch(Storage& watched) {
    storage = &watched;
    health = HealthReport(options.version, storage->recovery());
    storage->observe(metrics);
    storage->observe(std::make_shared<HistoryEraser>(hub));
    storage->observeValues(hub);
    transactions->watch(*storage);
    hub->use(transactions);
    backups.emplace(loop, *storage, options.backups);
}

void Server::Parts::addEndpoint(const std::string& name, const std::optional<std::string>& path, Origin origin,
                                ClientListener& clients) {
    auto socket = openSocket(name, path, options.sockets);
    const std::string opened = socket ? socket->path() : "";
    endpoints.push_back({name, origin, clients, opened, std::move(socket), nullptr});
}

void Server::Parts::openListeners() {
    for (auto& endpoint : endpoints) {
        endpoint.listener = std::make_unique<UnixSocketListener>(loop, std::move(endpoint.socket), endpoint.origin,
                                                                 endpoint.clients, backlog);
    }
    if (webListener) {
        webAddress = {webListener->address(), webListener->port()};
    }
    if (webAddress) {
        openWebServer();
    }
    health.setServing(true);
    loop.keepOpen(true);
    phase = Phase::SERVING;
}

void Server::Parts::openWebServer() {
    webKey = randomHex(keyBytes);
    const auto seconds = [now = options.environment.now] {
        return std::chrono::duration_cast<std::chrono::seconds>(now().time_since_epoch()).count();
    };
    WebSite site{WebAccess(*webAddress, options.allowedOrigin, webKey, cookieSecret(), seconds),
                 std::move(pages),
                 {{"/healthz", [this] { return healthResponse(); }},
                  {"/metrics", [this] { return metricsResponse(metrics->text()); }}}};
    std::vector<WebSocketRoute> routes;
    for (const auto& endpoint : endpoints) {
        // Whoever speaks as a native client at the Unix socket is a page here.
        const Origin origin = endpoint.origin == Origin::SOCKET ? Origin::PAGE : endpoint.origin;
        routes.push_back({"/" + endpoint.name, endpoint.name + ".v1", origin, endpoint.clients});
    }
    webServer = std::make_unique<WebServer>(loop, std::move(webListener), std::move(site), std::move(routes), backlog);
}

/// The secret stays the same over restarts, so that an open page goes on when the service is back. Not after a
/// recovery: a backup may hold a secret that was replaced since.
std::string Server::Parts::cookieSecret() {
    if (storage == nullptr) {
        return randomHex(secretBytes);
    }
    const auto state = storage->state(webTable);
    const auto kept = state->load(secretName);
    if (storage->recovery().source == Recovery::Source::NOT_NEEDED && kept && kept->size() == 2 * secretBytes) {
        return *kept;
    }
    std::string made = randomHex(secretBytes);
    if (!state->save(secretName, made)) {
        writeLog(VessaLogger::WARNING, "cannot store the cookie secret: open pages need a new address after a restart");
    }
    return made;
}

std::string Server::Parts::randomHex(std::size_t bytes) const {
    return hexadecimal(options.environment.random(bytes));
}

std::string Server::Parts::pageAddress() const {
    return webAddress ? "http://" + webAddress->text() + "/?key=" + webKey : "";
}

std::string Server::Parts::startText() const {
    const std::string& path = endpoints.front().path;
    const std::string socket = path.empty() ? "" : "socket: " + path;
    return pageAddress() + (webAddress && !path.empty() ? " " : "") + socket;
}

void Server::Parts::performPosted(const std::function<void()>& action) {
    try {
        hub->perform(Origin::DEVICE, action);
    } catch (const std::exception& error) {
        writeLog(VessaLogger::ERROR, std::string("a posted action failed: ") + error.what());
    }
}

HttpResponse Server::Parts::healthResponse() {
    return health.response(storage != nullptr ? storage->health() : StorageHealth{}, healthTexts);
}

/// Stored first: a secret that was replaced must not be valid again after the next start.
std::optional<std::string> Server::Parts::renewPageKey() {
    const std::string key = randomHex(keyBytes);
    const std::string secret = randomHex(secretBytes);
    if (!webServer || (storage != nullptr && !storage->state(webTable)->save(secretName, secret))) {
        return std::nullopt;
    }
    webKey = key;
    webServer->replaceKey(key, secret);
    writeLog(VessaLogger::INFORMATION, "replaced the page key");
    return pageAddress();
}

std::string Server::Parts::backUp() {
    if (storage == nullptr) {
        throw DatabaseError("there is no storage");
    }
    return storage->backupNow();
}

Wire::StatusReply Server::Parts::status() {
    using namespace std::chrono;
    Wire::StatusReply told;
    told.health = *healthResponse().body;
    told.hostVersion = options.version;
    if (storage != nullptr) {
        told.disk = diskOf(storage->file());
    }
    told.now = duration_cast<milliseconds>(options.environment.now().time_since_epoch()).count();
    return told;
}

}  // namespace SettingsHandlerKit
