#include "Television.h"

#include <stdexcept>
#include <utility>

#include "simulation/DiskWithFaults.h"
#include "simulation/LoggingObservers.h"
#include "simulation/SdkWithFaults.h"

namespace SettingsHost {

SettingsHandlerKit::ServerOptions withFaults(SettingsHandlerKit::ServerOptions options,
                                             const std::shared_ptr<Faults>& faults,
                                             const ClientsWithFaults::Later& later, const ClientsWithFaults::Cut& cut) {
    options.environment.now = [faults] { return std::chrono::system_clock::now() + faults->timeOf(Fault::CLOCK_JUMP); };
    options.between = [faults, later, cut](std::shared_ptr<SettingsHandlerKit::ClientListener> server) {
        return std::make_shared<ClientsWithFaults>(std::move(server), faults, later, cut);
    };
    return options;
}

Television::Television(SettingsHandlerKit::Server& itsServer, Surroundings surroundings)
    : server(itsServer),
      system(std::move(surroundings)),
      trace(std::make_shared<MessageTrace>()),
      console([this](const auto& action) { server.perform(action); }, server.traffic(), trace,
              PageAddress{[this] { return server.pageAddress(); }, [this] { return server.renewPageKey(); }}) {
    server.addTrafficObserver(trace);
}

void Television::openStorage(const std::string& file, std::shared_ptr<SettingsHandlerKit::Disk> disk) {
    storage = std::make_unique<SettingsHandlerKit::Storage>(
        file, makeDiskWithFaults(system.faults, system.sleep, std::move(disk)));
}

void Television::startHandler(const std::optional<World>& world) {
    const auto values = server.valueObserver();
    state = storage->state("simulation");
    if (world) {
        storeWorld(*world, *storage, *state);
    }
    device = std::make_shared<SimulatedDevice>(*state, values);
    sdkBridge = std::make_shared<SimulatedSdkBridge>(*state, *storage, device, values);
    appLaunch = std::make_shared<SimulatedAppLaunch>();
    handler = server.createHandler(*storage, std::make_shared<SdkWithFaults>(sdkBridge, system.faults, system.sleep),
                                   appLaunch, device);
    device->subscribe(handler, handler);
    server.onRollBack([this] {
        device->readState();
        sdkBridge->readState();
    });
    handler->addOrliaLocaleObserver(std::make_shared<LoggingLocaleObserver>());
    handler->addFriendlyNameObserver(std::make_shared<LoggingFriendlyNameObserver>());
    handler->addEntitlementStatusObserver(std::make_shared<LoggingEntitlementObserver>());
    defineFaults();
    console.obey(DeviceCommands(
        device, sdkBridge, appLaunch, [this] { return handler->outcome(); }, system.faults,
        [this](bool withValues) {
            const auto failures = storage->health().failures;
            const World present = currentWorld(*storage, *sdkBridge, *device, *system.faults);
            if (storage->health().failures != failures) {
                throw std::runtime_error("a value of the world could not be read");
            }
            return worldFrame(present, withValues);
        }));
}

void Television::defineFaults() {
    server.addToHealth("faults", [faults = system.faults] { return faults->namesOn(); });
    system.faults->define(Fault::SDK_CHANGES,
                          [this](const std::string& key) { return sdkBridge->changeByItself(key); });
    system.faults->define(Fault::RESTART, [this](const std::string& /*value*/) {
        system.restart();
        return true;
    });
}

}  // namespace SettingsHost
