#include "Composition.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <filesystem>
#include <utility>
#include <vector>

#include <malloc.h>

#include "SettingsHandler/SettingsNames.h"
#include "SettingsHandlerKit/Logging.h"
#include "SettingsHandlerKit/ServiceManager.h"
#include "handler/LocaleGuard.h"
#include "simulation/LoggingObservers.h"

namespace SettingsHost {

namespace {

/// The grace period in which clients may read their backlog when the host stops.
constexpr unsigned drainMilliseconds = 500;

/// Allocations of at least this size do not come from the heap.
constexpr int largeAllocation = 64 * 1024;

constexpr std::size_t keyBytes = 16;
constexpr std::size_t secretBytes = 32;

SettingsHandlerKit::HttpAnswer metricsAnswer(const std::string& text) {
    SettingsHandlerKit::HttpAnswer answer = SettingsHandlerKit::plainAnswer(200, text);
    answer.contentType = "text/plain; version=0.0.4; charset=utf-8";
    return answer;
}

/// The name of the secret that signs cookies. Not "browserSecret": older software gave that one to browsers.
constexpr const char* secretName = "cookieSecret";

/// The secret stays the same over restarts, so that an open page goes on when the host is back. Not after a recovery: a
/// backup may hold a secret that was replaced since.
std::string cookieSecret(SettingsHandlerKit::StateStore& state, SettingsHandlerKit::Recovery::Source database) {
    const auto kept = state.load(secretName);
    if (database == SettingsHandlerKit::Recovery::Source::NOT_NEEDED && kept && kept->size() == 2 * secretBytes) {
        return *kept;
    }
    std::string made = SettingsHandlerKit::randomHex(secretBytes);
    if (!state.save(secretName, made)) {
        SettingsHandlerKit::writeLog(
            VessaLogger::WARNING,
            "cannot store the secret of the cookies: open pages will need a new address after a restart");
    }
    return made;
}

/// SIGHUP stops the host with its terminal, unless it is ignored (nohup).
std::vector<int> stopSignals(bool hangUpStops) {
    std::vector<int> signals{SIGINT, SIGTERM};
    struct sigaction hangUp {};
    if (hangUpStops && ::sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) {
        signals.push_back(SIGHUP);
    }
    return signals;
}

std::unique_ptr<SettingsHandlerKit::TcpListener> openWebListener(const Options& options,
                                                                 SettingsHandlerKit::PassedSockets& sockets) {
    if (!options.listen) {
        return nullptr;
    }
    if (auto passed = sockets.take("web")) {
        return std::make_unique<SettingsHandlerKit::TcpListener>(std::move(*passed));
    }
    return std::make_unique<SettingsHandlerKit::TcpListener>(options.listen->address, options.listen->port);
}

SettingsHandlerKit::PageFiles pagesIn(const Options& options) {
    return options.listen && !options.pagesFolder.empty() ? SettingsHandlerKit::PageFiles(options.pagesFolder)
                                                          : SettingsHandlerKit::PageFiles();
}

std::unique_ptr<SettingsHandlerKit::SocketFile> openSocket(const std::string& name, const std::string& path,
                                                           SettingsHandlerKit::PassedSockets& sockets) {
    if (auto passed = sockets.take(name)) {
        return std::make_unique<SettingsHandlerKit::SocketFile>(std::move(*passed));
    }
    return std::make_unique<SettingsHandlerKit::SocketFile>(path);
}

}  // namespace

Composition::Composition(const Options& options, SettingsHandlerKit::PassedSockets sockets,
                         const std::shared_ptr<SettingsHandlerKit::RequestContext>& context,
                         const std::function<void()>& onHangUp)
    : webListener(openWebListener(options, sockets)),
      pages(pagesIn(options)),
      settingsSocket(openSocket("settings", options.socketPath, sockets)),
      deviceSocket(openSocket("device", options.deviceSocketPath, sockets)),
      traffic(std::make_shared<SettingsHandlerKit::TrafficObservers>()),
      trace(std::make_shared<MessageTrace>()),
      backlog(std::make_shared<SettingsHandlerKit::Backlog>()),
      hub(std::make_shared<SettingsHandlerKit::MessageHub>(traffic, context, backlog)),
      metrics(std::make_shared<SettingsHandlerKit::ServerMetrics>(SETTINGS_HANDLER_VERSION)),
      database(SettingsHandlerKit::openOrRecover(options.storageFile, recovery)),
      storage(database, hub, *metrics, [this] { backups.cancel(); }),
      boundedStorage(storage, context, [this](std::size_t bytes) { return backlog->hasRoomFor(bytes); }),
      state(database, "simulation"),
      webState(database, "web"),
      device(std::make_shared<SimulatedDevice>(state, hub)),
      sdkBridge(std::make_shared<SimulatedSdkBridge>(state, storage, device, hub)),
      appLaunch(std::make_shared<SimulatedAppLaunch>()),
      health(SETTINGS_HANDLER_VERSION, recovery),
      backups(loop, database) {
    traffic->add(metrics);
    traffic->add(trace);
    // From here on signals wait for the loop, so that even one during the start ends in a clean stop.
    loop.onSignals(stopSignals(!onHangUp), [this] { loop.stop(); });
    if (onHangUp) {
        loop.onSignals({SIGHUP}, onHangUp);
    }
    hub->perform(SettingsHandlerKit::Origin::DEVICE, [this] { startHandler(); });
    openListeners(options);
    if (options.sandbox) {
        SettingsHandlerKit::enterSandbox(foldersInUse(options.log.file));
    }
}

Composition::~Composition() = default;

void Composition::startHandler() {
    setUnusableLocaleAside();
    handler = SettingsHandler::SettingsHandler::create(hub, boundedStorage, metrics, sdkBridge, appLaunch, device);
    handlerCache = std::make_shared<SettingsHandlerKit::HandlerCache>(boundedStorage, handler);
    hub->bound(handlerCache);
    handler->initializeSettings();
    handler->migrateExistingDeviceSettings();
    device->subscribe(handler, handler);
    handler->addOrliaLocaleObserver(std::make_shared<LoggingLocaleObserver>());
    handler->addFriendlyNameObserver(std::make_shared<LoggingFriendlyNameObserver>());
    handler->addEntitlementStatusObserver(std::make_shared<LoggingEntitlementObserver>());
}

/// A stored locale of older software may end the process inside the handler's migration. Such a value is moved to
/// another key of the database.
void Composition::setUnusableLocaleAside() {
    const std::string key = SettingsHandler::settingNameFromType(SettingsHandler::ORLIA_LOCALE);
    std::string value;
    storage.getValue(key, value);
    if (SettingsHandlerKit::isSafeForHandler(key, value)) {
        return;
    }
    const std::string newKey = storage.setAside(key);
    if (newKey.empty()) {
        throw SettingsHandlerKit::DatabaseError("the stored value of '" + key +
                                                "' is unusable and could not be set aside");
    }
    SettingsHandlerKit::writeLog(
        VessaLogger::ERROR,
        "rejected stored " + key + ": must be a JSON array of at most 32 levels; moved to '" + newKey + "'");
}

SettingsHandlerKit::SandboxFolders Composition::foldersInUse(const std::string& logFile) const {
    const auto folderOf = [](const std::string& file) {
        return std::filesystem::absolute(file).parent_path().string();
    };
    SettingsHandlerKit::SandboxFolders folders{{folderOf(database.file())},
                                               {folderOf(settingsListener->path()), folderOf(deviceListener->path())}};
    if (!logFile.empty()) {
        folders.changed.push_back(folderOf(logFile));
    }
    return folders;
}

void Composition::openListeners(const Options& options) {
    if (options.listen) {
        webAddress = {webListener->address(), webListener->port()};
        webKey = SettingsHandlerKit::randomHex(keyBytes);
    }
    const auto counts = [this] { return HandlerCounts{hub->eventsSent(), storage.health().failures}; };
    console = std::make_unique<DeviceConsole>(
        DeviceCommands(device, sdkBridge, appLaunch, counts), hub, traffic, trace,
        PageAddress{[this] { return pageAddress(); }, [this] { return renewPageAddress(); }});
    settingsListener = std::make_unique<SettingsHandlerKit::UnixSocketListener>(
        loop, std::move(settingsSocket), SettingsHandlerKit::Origin::SOCKET, *hub, backlog);
    deviceListener = std::make_unique<SettingsHandlerKit::UnixSocketListener>(
        loop, std::move(deviceSocket), SettingsHandlerKit::Origin::DEVICE, *console, backlog);
    if (options.listen) {
        openWebServer(options);
    }
    health.setServing(true);
}

void Composition::openWebServer(const Options& options) {
    SettingsHandlerKit::WebSite site{SettingsHandlerKit::WebAccess(*webAddress, options.allowedOrigin, webKey,
                                                                   cookieSecret(webState, recovery.source)),
                                     std::move(pages),
                                     {{"/healthz", [this] { return health.answer(storage.health()); }},
                                      {"/metrics", [this] { return metricsAnswer(metrics->text()); }}}};
    webServer = std::make_unique<SettingsHandlerKit::WebServer>(loop, std::move(webListener), std::move(site), *hub,
                                                                *console, backlog);
}

std::string Composition::pageAddress() const {
    return webAddress ? "http://" + webAddress->text() + "/?key=" + webKey : "";
}

/// Stored first: a secret that was replaced must not be valid again after the next start.
std::optional<std::string> Composition::renewPageAddress() {
    const std::string key = SettingsHandlerKit::randomHex(keyBytes);
    const std::string secret = SettingsHandlerKit::randomHex(secretBytes);
    if (!webState.save(secretName, secret)) {
        return std::nullopt;
    }
    webKey = key;
    webServer->replaceKey(key, secret);
    SettingsHandlerKit::writeLog(VessaLogger::INFORMATION, "the pages have a new key");
    return pageAddress();
}

std::string Composition::readyLine() const {
    return "ready: " + (webAddress ? pageAddress() + " " : "") + "socket: " + settingsListener->path();
}

/// Without the key, since every user of the machine may read it.
std::string Composition::status() const {
    return "Serving at " + settingsListener->path() + (webAddress ? " and " + webAddress->text() : "");
}

void Composition::run() {
    SettingsHandlerKit::notifyReady(status());
    std::optional<SettingsHandlerKit::RepeatingTimer> heartbeat;
    if (const auto waitTimeout = SettingsHandlerKit::watchdogTimeout()) {
        constexpr auto shortest = std::chrono::milliseconds(1);
        heartbeat.emplace(loop, std::chrono::milliseconds(0), std::max(shortest, *waitTimeout / 2),
                          SettingsHandlerKit::notifyAlive);
    }
    // Gives memory that only the start needed back to the system, and later every large allocation at once: otherwise
    // the C library keeps more and more of them after the first ones.
    ::malloc_trim(0);
    ::mallopt(M_MMAP_THRESHOLD, largeAllocation);
    loop.run();
    SettingsHandlerKit::notifyStopping("Sending what clients wait for");
    health.setServing(false);
    SettingsHandlerKit::writeLog(VessaLogger::INFORMATION, "stopping");
    settingsListener->close();
    deviceListener->close();
    if (webServer) {
        webServer->close();
    }
    loop.drain(drainMilliseconds, [this] {
        settingsListener->closeNow();
        deviceListener->closeNow();
        if (webServer) {
            webServer->closeNow();
        }
    });
}

}  // namespace SettingsHost
