#include "Composition.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <filesystem>
#include <utility>
#include <vector>

#include <malloc.h>

#include "SettingsHandler/SettingsNames.h"
#include "guard/LocaleGuard.h"
#include "logging/HostLog.h"
#include "observers/LoggingObservers.h"
#include "service/ServiceManager.h"

namespace SettingsHost {

namespace {

/// How long clients may take to read what waits for them when the host stops.
constexpr unsigned farewellMilliseconds = 500;

constexpr std::size_t keyBytes = 16;
constexpr std::size_t secretBytes = 32;

HttpAnswer metricsAnswer(const std::string& text) {
    HttpAnswer answer = plainAnswer(200, text);
    answer.contentType = "text/plain; version=0.0.4; charset=utf-8";
    return answer;
}

/// What browsers are given that came with the key. It stays the same over restarts, so that a page that is open goes on
/// when the host is back.
std::string browserSecret(StateStore& state) {
    const std::string name = "browserSecret";
    const auto kept = state.load(name);
    if (kept && kept->size() == 2 * secretBytes) {
        return *kept;
    }
    std::string made = randomHex(secretBytes);
    if (!state.save(name, made)) {
        logHost(VessaLogger::WARNING, "open pages will need a new address after a restart");
    }
    return made;
}

/// SIGHUP stops the host with its terminal, except when whoever started it wants it to stay (nohup).
std::vector<int> stopSignals() {
    std::vector<int> signals{SIGINT, SIGTERM};
    struct sigaction hangUp {};
    if (::sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) {
        signals.push_back(SIGHUP);
    }
    return signals;
}

std::unique_ptr<TcpDoor> openWebListener(const Options& options, PassedSockets& sockets) {
    if (!options.listen) {
        return nullptr;
    }
    if (auto passed = sockets.take("web")) {
        return std::make_unique<TcpDoor>(std::move(*passed));
    }
    return std::make_unique<TcpDoor>(options.listen->address, options.listen->port);
}

SocketPlace placeOf(const std::string& name, const std::string& path, PassedSockets& sockets) {
    if (auto passed = sockets.take(name)) {
        return std::move(*passed);
    }
    return path;
}

}  // namespace

Composition::Composition(const Options& options, PassedSockets sockets, const std::shared_ptr<RequestContext>& context)
    : webListener(openWebListener(options, sockets)),
      traffic(std::make_shared<TrafficObservers>()),
      trace(std::make_shared<MessageTrace>()),
      hub(std::make_shared<MessageHub>(traffic, context)),
      metrics(std::make_shared<HostMetrics>(SETTINGS_HANDLER_VERSION)),
      database(openOrRecover(options.storageFile, recovery)),
      storage(
          database, [this](const std::string& key) { hub->valueChanged(key); }, *metrics, [this] { backups.giveUp(); }),
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
    loop.onSignals(stopSignals(), [this] { loop.stop(); });
    hub->perform(Origin::DEVICE, [this] { startHandler(); });
    openDoors(options, sockets);
    if (options.sandbox) {
        enterSandbox(foldersInUse(options.log.file));
    }
}

Composition::~Composition() = default;

void Composition::startHandler() {
    handler = SettingsHandler::SettingsHandler::create(hub, storage, metrics, sdkBridge, appLaunch, device);
    handler->initializeSettings();
    setUnusableLocaleAside();
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
    if (mayReachHandler(key, value)) {
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
    SandboxFolders folders{{folderOf(database.file())}, {folderOf(settingsDoor->path()), folderOf(deviceDoor->path())}};
    if (!logFile.empty()) {
        folders.changed.push_back(folderOf(logFile));
    }
    return folders;
}

DoorEvents Composition::settingsEvents() {
    return {[this](const auto& client) { hub->addClient(client); },
            [this](const auto& client, Departure departure) { hub->removeClient(client, departure); },
            [this](const auto& client, const auto& frame) { hub->receive(client, frame); },
            [this](const auto& client) { hub->refuseTooLarge(*client); },
            [this](Origin origin) { traffic->clientTurnedAway(origin); }};
}

DoorEvents Composition::deviceEvents() {
    return {[this](const auto& client) { console->arrived(client); },
            [this](const auto& client, Departure departure) { console->left(client, departure); },
            [this](const auto& client, const auto& frame) { console->receive(client, frame); },
            [this](const auto& client) { console->refuseTooLarge(client); },
            [this](Origin origin) { traffic->clientTurnedAway(origin); }};
}

void Composition::openDoors(const Options& options, PassedSockets& sockets) {
    if (options.listen) {
        webAddress = {webListener->address(), webListener->port()};
        webKey = randomHex(keyBytes);
    }
    console = std::make_unique<DeviceConsole>(DeviceCommands(device, sdkBridge, appLaunch), hub, traffic, trace,
                                              pageAddress());
    settingsDoor = std::make_unique<UnixSocketDoor>(loop, placeOf("settings", options.socketPath, sockets),
                                                    Origin::SOCKET, settingsEvents());
    deviceDoor = std::make_unique<UnixSocketDoor>(loop, placeOf("device", options.deviceSocketPath, sockets),
                                                  Origin::DEVICE, deviceEvents());
    if (options.listen) {
        openWebDoor(options);
    }
    health.setServing(true);
}

void Composition::openWebDoor(const Options& options) {
    WebSite site{WebAccess(*webAddress, options.allowedOrigin, webKey, browserSecret(webState)),
                 options.pagesFolder.empty() ? PageFiles() : PageFiles(options.pagesFolder),
                 {{"/healthz", [this] { return health.answer(storage.health()); }},
                  {"/metrics", [this] { return metricsAnswer(metrics->text()); }}}};
    webDoor =
        std::make_unique<WebDoor>(loop, std::move(webListener), std::move(site), settingsEvents(), deviceEvents());
}

std::string Composition::pageAddress() const {
    return webAddress ? "http://" + webAddress->text() + "/?key=" + webKey : "";
}

std::string Composition::readyLine() const {
    return "ready: " + (webAddress ? pageAddress() + " " : "") + "socket: " + settingsDoor->path();
}

/// Holds no key, since every user of the machine may read it.
std::string Composition::status() const {
    return "Serving at " + settingsDoor->path() + (webAddress ? " and " + webAddress->text() : "");
}

void Composition::run() {
    tellReady(status());
    std::optional<RepeatingTimer> heartbeat;
    if (const auto patience = patienceOfServiceManager()) {
        constexpr auto shortest = std::chrono::milliseconds(1);
        heartbeat.emplace(loop, std::chrono::milliseconds(0), std::max(shortest, *patience / 2), tellAlive);
    }
    // Back to the system with what the start alone needed.
    ::malloc_trim(0);
    loop.run();
    tellStopping("Sending what clients wait for");
    health.setServing(false);
    logHost(VessaLogger::INFORMATION, "stopping");
    settingsDoor->close();
    deviceDoor->close();
    if (webDoor) {
        webDoor->close();
    }
    loop.drain(farewellMilliseconds, [this] {
        settingsDoor->closeNow();
        deviceDoor->closeNow();
        if (webDoor) {
            webDoor->closeNow();
        }
    });
}

}  // namespace SettingsHost
