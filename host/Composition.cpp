#include "Composition.h"

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <utility>

#include "SettingsHandlerKit/Sandbox.h"
#include "simulation/ClientsWithFaults.h"
#include "simulation/DiskWithFaults.h"
#include "simulation/LoggingObservers.h"
#include "simulation/SdkWithFaults.h"

namespace SettingsHost {

namespace {

SettingsHandlerKit::ServerOptions serverOptions(const Options& options, SettingsHandlerKit::PassedSockets sockets,
                                                const std::shared_ptr<SettingsHandlerKit::RequestContext>& context,
                                                const std::shared_ptr<Faults>& faults,
                                                const ClientsWithFaults::Later& later,
                                                const ClientsWithFaults::Cut& cut) {
    SettingsHandlerKit::ServerOptions chosen;
    chosen.socketPath = options.socketPath;
    chosen.listen = options.listen;
    chosen.pagesFolder = options.pagesFolder;
    chosen.allowedOrigin = options.allowedOrigin;
    chosen.sockets = std::move(sockets);
    chosen.context = context;
    chosen.environment.now = [faults] { return std::chrono::system_clock::now() + faults->timeOf(Fault::CLOCK_JUMP); };
    chosen.between = [faults, later, cut](std::shared_ptr<SettingsHandlerKit::ClientListener> server) {
        return std::make_shared<ClientsWithFaults>(std::move(server), faults, later, cut);
    };
    return chosen;
}

/// As a slow disk and a slow voice SDK do.
void block(std::chrono::milliseconds time) {
    std::this_thread::sleep_for(time);
}

}  // namespace

Composition::Composition(const Options& options, SettingsHandlerKit::PassedSockets sockets,
                         const std::shared_ptr<SettingsHandlerKit::RequestContext>& context,
                         const std::function<void()>& onHangUp)
    : world(options.worldFile.empty() ? std::nullopt : std::optional<World>(worldIn(options.worldFile))),
      server(serverOptions(
          options, std::move(sockets), context, faults,
          [this](auto delay, auto action) { server.postLater(delay, std::move(action)); },
          [this](const auto& client) { trace->clientCut(client); })),
      trace(std::make_shared<MessageTrace>()),
      console([this](const auto& action) { server.perform(action); }, server.traffic(), trace,
              PageAddress{[this] { return server.pageAddress(); }, [this] { return server.renewPageKey(); }}) {
    server.addTrafficObserver(trace);
    server.addEndpoint({"device", options.deviceSocketPath, SettingsHandlerKit::Origin::DEVICE}, console);
    storage = std::make_unique<SettingsHandlerKit::Storage>(options.storageFile, makeDiskWithFaults(faults, block));
    // From here on signals wait for the loop, so that even one during the start ends in a clean stop.
    server.handleSignals(onHangUp);
    startHandler();
    ready = "ready: " + server.start();
    if (options.sandbox) {
        enterSandbox(options);
    }
    if (world) {
        for (const auto& [fault, value] : world->faults) {
            faults->switchOn(fault, value);
        }
    }
}

void Composition::startHandler() {
    const auto values = server.valueObserver();
    state = storage->state("simulation");
    if (world) {
        storeWorld(*world, *storage, *state);
    }
    device = std::make_shared<SimulatedDevice>(*state, values);
    sdkBridge = std::make_shared<SimulatedSdkBridge>(*state, *storage, device, values);
    appLaunch = std::make_shared<SimulatedAppLaunch>();
    handler =
        server.createHandler(*storage, std::make_shared<SdkWithFaults>(sdkBridge, faults, block), appLaunch, device);
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
        device, sdkBridge, appLaunch, [this] { return handler->outcome(); }, faults,
        [this](bool withValues) {
            const auto failures = storage->health().failures;
            const World present = currentWorld(*storage, *sdkBridge, *device, *faults);
            if (storage->health().failures != failures) {
                throw std::runtime_error("a value of the world could not be read");
            }
            return worldFrame(present, withValues);
        }));
}

void Composition::defineFaults() {
    server.addToHealth("faults", [this] { return faults->namesOn(); });
    faults->define(Fault::SDK_CHANGES, [this](const std::string& key) { return sdkBridge->changeByItself(key); });
    faults->define(Fault::RESTART, [this](const std::string& /*value*/) {
        // The second of two restarts at once has nothing left to do.
        if (!next) {
            next = NextRun{server.handOver(), std::make_unique<HeldSignals>()};
        }
        return true;
    });
}

std::optional<NextRun> Composition::run() {
    server.run();
    return std::move(next);
}

void Composition::enterSandbox(const Options& options) {
    SettingsHandlerKit::SandboxFolders folders = server.foldersInUse();
    if (!options.log.file.empty()) {
        folders.changed.push_back(std::filesystem::absolute(options.log.file).parent_path().string());
    }
    if (!options.pagesFolder.empty()) {
        // For the fault "restart": a host reads its pages when it starts.
        folders.read.push_back(std::filesystem::absolute(options.pagesFolder).string());
    }
    SettingsHandlerKit::enterSandbox(folders);
}

}  // namespace SettingsHost
