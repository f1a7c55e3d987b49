#include "Composition.h"

#include <chrono>
#include <filesystem>
#include <thread>
#include <utility>

#include "SettingsHandlerKit/Sandbox.h"
#include "simulation/DiskWithFaults.h"
#include "simulation/LoggingObservers.h"
#include "simulation/SdkWithFaults.h"

namespace SettingsHost {

namespace {

SettingsHandlerKit::ServerOptions serverOptions(const Options& options, SettingsHandlerKit::PassedSockets sockets,
                                                const std::shared_ptr<SettingsHandlerKit::RequestContext>& context,
                                                const std::shared_ptr<const Faults>& faults) {
    SettingsHandlerKit::ServerOptions chosen;
    chosen.socketPath = options.socketPath;
    chosen.listen = options.listen;
    chosen.pagesFolder = options.pagesFolder;
    chosen.allowedOrigin = options.allowedOrigin;
    chosen.sockets = std::move(sockets);
    chosen.context = context;
    chosen.environment.now = [faults] { return std::chrono::system_clock::now() + faults->timeOf(Fault::CLOCK_JUMP); };
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
    : server(serverOptions(options, std::move(sockets), context, faults)),
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
        enterSandbox(options.log.file);
    }
}

void Composition::startHandler() {
    const auto values = server.valueObserver();
    state = storage->state("simulation");
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
    faults->define(Fault::SDK_CHANGES, [this](const std::string& key) { return sdkBridge->changeByItself(key); });
    faults->define(Fault::RESTART, [](const std::string&) { return false; });
    console.obey(DeviceCommands(
        device, sdkBridge, appLaunch, [this] { return handler->outcome(); }, faults));
}

void Composition::enterSandbox(const std::string& logFile) {
    SettingsHandlerKit::SandboxFolders folders = server.foldersInUse();
    if (!logFile.empty()) {
        folders.changed.push_back(std::filesystem::absolute(logFile).parent_path().string());
    }
    SettingsHandlerKit::enterSandbox(folders);
}

}  // namespace SettingsHost
