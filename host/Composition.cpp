#include "Composition.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <filesystem>
#include <utility>
#include <vector>

#include <malloc.h>

#include "SettingsHandler/SettingsNames.h"
#include "handler/LocaleGuard.h"
#include "service/logging/HostLog.h"
#include "service/manager/ServiceManager.h"
#include "simulation/LoggingObservers.h"

namespace SettingsHost {

namespace {

/// How long clients may take to read what waits for them when the host stops.
constexpr unsigned drainMilliseconds = 500;

/// Memory of at least this size does not come from the heap.
constexpr int largePiece = 64 * 1024;

constexpr std::size_t keyBytes = 16;
constexpr std::size_t secretBytes = 32;

HttpAnswer metricsAnswer(const std::string& text) {
    HttpAnswer answer = plainAnswer(200, text);
    answer.contentType = "text/plain; version=0.0.4; charset=utf-8";
    return answer;
}

/// What signs the browsers' cookies. Not "browserSecret": where older software left that, browsers know it.
constexpr const char* secretName = "cookieSecret";

/// It stays the same over restarts, so that a page that is open goes on when the host is back. A backup may hold one
/// that was replaced since.
std::string cookieSecret(StateStore& state, Recovery::Source database) {
    const auto kept = state.load(secretName);
    if (database == Recovery::Source::NOT_NEEDED && kept && kept->size() == 2 * secretBytes) {
        return *kept;
    }
    std::string made = randomHex(secretBytes);
    if (!state.save(secretName, made)) {
        logHost(VessaLogger::WARNING, "open pages will need a new address after a restart");
    }
    return made;
}

/// SIGHUP stops the host with its terminal, except when whoever started it wants it to stay (nohup).
std::vector<int> stopSignals(bool hangUpStops) {
    std::vector<int> signals{SIGINT, SIGTERM};
    struct sigaction hangUp {};
    if (hangUpStops && ::sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) {
        signals.push_back(SIGHUP);
    }
    return signals;
}

std::unique_ptr<TcpListener> openWebListener(const Options& options, PassedSockets& sockets) {
    if (!options.listen) {
        return nullptr;
    }
    if (auto passed = sockets.take("web")) {
        return std::make_unique<TcpListener>(std::move(*passed));
    }
    return std::make_unique<TcpListener>(options.listen->address, options.listen->port);
}

PageFiles pagesIn(const Options& options) {
    return options.listen && !options.pagesFolder.empty() ? PageFiles(options.pagesFolder) : PageFiles();
}

std::unique_ptr<SocketFile> openSocket(const std::string& name, const std::string& path, PassedSockets& sockets) {
    if (auto passed = sockets.take(name)) {
        return std::make_unique<SocketFile>(std::move(*passed));
    }
    return std::make_unique<SocketFile>(path);
}

}  // namespace

Composition::Composition(const Options& options, PassedSockets sockets, const std::shared_ptr<RequestContext>& context,
                         const std::function<void()>& onHangUp)
    : webListener(openWebListener(options, sockets)),
      pages(pagesIn(options)),
      settingsSocket(openSocket("settings", options.socketPath, sockets)),
      deviceSocket(openSocket("device", options.deviceSocketPath, sockets)),
      traffic(std::make_shared<TrafficObservers>()),
      trace(std::make_shared<MessageTrace>()),
      backlog(std::make_shared<Backlog>()),
      hub(std::make_shared<MessageHub>(traffic, context, backlog)),
      metrics(std::make_shared<HostMetrics>(SETTINGS_HANDLER_VERSION)),
      database(openOrRecover(options.storageFile, recovery)),
      storage(
          database, [this](const std::string& key) { hub->valueChanged(key); }, *metrics, [this] { backups.cancel(); }),
      boundedStorage(storage, context, [this](std::size_t bytes) { return backlog->hasRoomFor(bytes); }),
      state(database, "simulation"),
      webState(database, "web"),
      device(std::make_shared<SimulatedDevice>(state, [this](const std::string& key) { hub->valueChanged(key); })),
      sdkBridge(std::make_shared<SimulatedSdkBridge>(state, storage, device,
                                                     [this](const std::string& key) { hub->valueChanged(key); })),
      appLaunch(std::make_shared<SimulatedAppLaunch>()),
      health(SETTINGS_HANDLER_VERSION, recovery),
      backups(loop, database) {
    traffic->add(metrics);
    traffic->add(trace);
    // From here on a signal waits for the loop, so that even one during the start ends in a clean stop.
    loop.onSignals(stopSignals(!onHangUp), [this] { loop.stop(); });
    if (onHangUp) {
        loop.onSignals({SIGHUP}, onHangUp);
    }
    hub->perform(Origin::DEVICE, [this] { startHandler(); });
    openListeners(options);
    if (options.sandbox) {
        enterSandbox(foldersInUse(options.log.file));
    }
}

Composition::~Composition() = default;

void Composition::startHandler() {
    setUnusableLocaleAside();
    handler = SettingsHandler::SettingsHandler::create(hub, boundedStorage, metrics, sdkBridge, appLaunch, device);
    handler->initializeSettings();
    handler->migrateExistingDeviceSettings();
    device->subscribe(handler, handler);
    handler->addOrliaLocaleObserver(std::make_shared<LoggingLocaleObserver>());
    handler->addFriendlyNameObserver(std::make_shared<LoggingFriendlyNameObserver>());
    handler->addEntitlementStatusObserver(std::make_shared<LoggingEntitlementObserver>());
}

/// Keeps a stored locale of older software that would end the process inside the handler away from the migration. It
/// stays in the database under another key.
void Composition::setUnusableLocaleAside() {
    const std::string key = SettingsHandler::settingNameFromType(SettingsHandler::ORLIA_LOCALE);
    std::string value;
    storage.getValue(key, value);
    if (isSafeForHandler(key, value)) {
        return;
    }
    const std::string newKey = storage.setAside(key);
    if (newKey.empty()) {
        throw DatabaseError("the stored value of '" + key + "' is unusable and could not be set aside");
    }
    logHost(VessaLogger::ERROR,
            "the stored value of '" + key + "' is no array of locales; it is now under '" + newKey + "'");
}

SandboxFolders Composition::foldersInUse(const std::string& logFile) const {
    const auto folderOf = [](const std::string& file) {
        return std::filesystem::absolute(file).parent_path().string();
    };
    SandboxFolders folders{{folderOf(database.file())},
                           {folderOf(settingsListener->path()), folderOf(deviceListener->path())}};
    if (!logFile.empty()) {
        folders.changed.push_back(folderOf(logFile));
    }
    return folders;
}

void Composition::serve(const std::shared_ptr<Client>& client, const std::string& frame) {
    hub->receive(client, frame);
    if (!boundedStorage.requestEnded()) {
        return;
    }
    try {
        // As after a restart: the cache begins with the settings of the catalogue.
        hub->perform(Origin::DEVICE, [this] { handler->initializeSettings(); });
    } catch (const std::exception& error) {
        logHost(VessaLogger::ERROR, std::string("the handler's cache could not be made anew: ") + error.what());
    }
}

ListenerEvents Composition::settingsEvents() {
    return {[this](const auto& client) { hub->addClient(client); },
            [this](const auto& client, DisconnectReason departure) { hub->removeClient(client, departure); },
            [this](const auto& client, const auto& frame) { serve(client, frame); },
            [this](const auto& client) { hub->refuseTooLarge(*client); },
            [this](Origin origin) { traffic->clientRefused(origin); },
            backlog};
}

ListenerEvents Composition::deviceEvents(DeviceListener listener) {
    return {[this](const auto& client) { console->arrived(client); },
            [this](const auto& client, DisconnectReason departure) { console->left(client, departure); },
            [this, listener](const auto& client, const auto& frame) { console->receive(client, frame, listener); },
            [this](const auto& client) { console->refuseTooLarge(client); },
            [this](Origin origin) { traffic->clientRefused(origin); },
            backlog};
}

void Composition::openListeners(const Options& options) {
    if (options.listen) {
        webAddress = {webListener->address(), webListener->port()};
        webKey = randomHex(keyBytes);
    }
    const auto counts = [this] { return HandlerCounts{hub->eventsSent(), storage.health().failures}; };
    console = std::make_unique<DeviceConsole>(
        DeviceCommands(device, sdkBridge, appLaunch, counts), hub, traffic, trace,
        PageAddress{[this] { return pageAddress(); }, [this] { return renewPageAddress(); }});
    settingsListener =
        std::make_unique<UnixSocketListener>(loop, std::move(settingsSocket), Origin::SOCKET, settingsEvents());
    deviceListener = std::make_unique<UnixSocketListener>(loop, std::move(deviceSocket), Origin::DEVICE,
                                                          deviceEvents(DeviceListener::SOCKET));
    if (options.listen) {
        openWebServer(options);
    }
    health.setServing(true);
}

void Composition::openWebServer(const Options& options) {
    WebSite site{WebAccess(*webAddress, options.allowedOrigin, webKey, cookieSecret(webState, recovery.source)),
                 std::move(pages),
                 {{"/healthz", [this] { return health.answer(storage.health()); }},
                  {"/metrics", [this] { return metricsAnswer(metrics->text()); }}}};
    webServer = std::make_unique<WebServer>(loop, std::move(webListener), std::move(site), settingsEvents(),
                                            deviceEvents(DeviceListener::WEB));
}

std::string Composition::pageAddress() const {
    return webAddress ? "http://" + webAddress->text() + "/?key=" + webKey : "";
}

/// Stored first: what lets nobody in any more must not do so again after the next start.
std::optional<std::string> Composition::renewPageAddress() {
    const std::string key = randomHex(keyBytes);
    const std::string secret = randomHex(secretBytes);
    if (!webState.save(secretName, secret)) {
        return std::nullopt;
    }
    webKey = key;
    webServer->replaceKey(key, secret);
    logHost(VessaLogger::INFORMATION, "the pages have a new key");
    return pageAddress();
}

std::string Composition::readyLine() const {
    return "ready: " + (webAddress ? pageAddress() + " " : "") + "socket: " + settingsListener->path();
}

/// Holds no key, since every user of the machine may read it.
std::string Composition::status() const {
    return "Serving at " + settingsListener->path() + (webAddress ? " and " + webAddress->text() : "");
}

void Composition::run() {
    notifyReady(status());
    std::optional<RepeatingTimer> heartbeat;
    if (const auto waitTimeout = watchdogTimeout()) {
        constexpr auto shortest = std::chrono::milliseconds(1);
        heartbeat.emplace(loop, std::chrono::milliseconds(0), std::max(shortest, *waitTimeout / 2), notifyAlive);
    }
    // Back to the system with what the start alone needed, and later with every large piece at once: the C library
    // would keep more and more of them after the first ones.
    ::malloc_trim(0);
    ::mallopt(M_MMAP_THRESHOLD, largePiece);
    loop.run();
    notifyStopping("Sending what clients wait for");
    health.setServing(false);
    logHost(VessaLogger::INFORMATION, "stopping");
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
