#include "Composition.h"

#include <csignal>
#include <exception>
#include <vector>

#include "SettingsHandler/SettingsNames.h"
#include "guard/LocaleGuard.h"
#include "logging/HostLog.h"
#include "observers/LoggingObservers.h"
#include "text/Frames.h"
#include "transport/FrameInspector.h"

namespace SettingsHost {

namespace {

/// How long clients may take to read what waits for them when the host stops.
constexpr unsigned farewellMilliseconds = 500;

/// SIGHUP stops the host with its terminal, except when whoever started it wants it to stay (nohup).
std::vector<int> stopSignals() {
    std::vector<int> signals{SIGINT, SIGTERM};
    struct sigaction hangUp {};
    if (::sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) {
        signals.push_back(SIGHUP);
    }
    return signals;
}

}  // namespace

Composition::Composition(const Options& options)
    : hub(std::make_shared<MessageHub>()),
      database(options.storageFile),
      storage(database, [this](const std::string& key) { hub->valueChanged(key); }),
      state(database, "simulation"),
      device(std::make_shared<SimulatedDevice>(state, [this](const std::string& key) { hub->valueChanged(key); })),
      sdkBridge(std::make_shared<SimulatedSdkBridge>(state, storage, device,
                                                     [this](const std::string& key) { hub->valueChanged(key); })),
      appLaunch(std::make_shared<SimulatedAppLaunch>()),
      metrics(std::make_shared<ChangeCounter>()),
      deviceCommands(device, sdkBridge, appLaunch) {
    // From here on a signal waits for the loop, so that even one during the start ends in a clean stop.
    loop.onSignals(stopSignals(), [this] { loop.stop(); });
    hub->perform(Origin::DEVICE, [this] { startHandler(); });
    openDoors(options);
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

void Composition::openDoors(const Options& options) {
    settingsDoor = std::make_unique<UnixSocketDoor>(
        loop, options.socketPath,
        DoorEvents{[this](const auto& client) { hub->addClient(client); },
                   [this](const auto& client) { hub->removeClient(client); },
                   [this](const auto& client, const auto& frame) { hub->receive(client, frame); },
                   [](const auto& client) { MessageHub::refuseTooLarge(*client); }});
    deviceDoor = std::make_unique<UnixSocketDoor>(
        loop, options.deviceSocketPath,
        DoorEvents{[](const auto&) {}, [](const auto&) {},
                   [this](const auto& client, const auto& frame) { executeDeviceCommand(*client, frame); },
                   [](const auto& client) { MessageHub::refuseTooLarge(*client); }});
}

void Composition::executeDeviceCommand(Client& client, const std::string& frame) {
    std::string answer;
    if (const auto refusal = inspectFrame(frame)) {
        answer = refusalFrame(refusal->code, refusal->message);
    } else {
        try {
            hub->perform(Origin::DEVICE, [&] { answer = deviceCommands.execute(frame); });
        } catch (const std::exception& error) {
            logHost(VessaLogger::ERROR, std::string("a device command failed: ") + error.what());
            answer = refusalFrame("failed", "the host could not carry it out; its log says why");
        }
    }
    client.send(std::make_shared<const std::string>(std::move(answer)));
}

std::string Composition::readyLine() const {
    return "ready: socket: " + settingsDoor->path();
}

void Composition::run() {
    loop.run();
    logHost(VessaLogger::INFORMATION, "stopping");
    settingsDoor->close();
    deviceDoor->close();
    loop.drain(farewellMilliseconds, [this] {
        settingsDoor->closeNow();
        deviceDoor->closeNow();
    });
}

}  // namespace SettingsHost
