#include "Composition.h"

#include <filesystem>
#include <thread>
#include <utility>

#include "SettingsHandlerKit/Sandbox.h"

namespace SettingsHost {

namespace {

SettingsHandlerKit::ServerOptions serverOptions(const Options& options, SettingsHandlerKit::PassedSockets sockets,
                                                const std::shared_ptr<SettingsHandlerKit::RequestContext>& context) {
    SettingsHandlerKit::ServerOptions chosen;
    chosen.socketPath = options.socketPath;
    chosen.listen = options.listen;
    chosen.pagesFolder = options.pagesFolder;
    chosen.allowedOrigin = options.allowedOrigin;
    chosen.sockets = std::move(sockets);
    chosen.context = context;
    return chosen;
}

}  // namespace

Composition::Composition(const Options& options, SettingsHandlerKit::PassedSockets sockets,
                         const std::shared_ptr<SettingsHandlerKit::RequestContext>& context,
                         const std::function<void()>& onHangUp)
    : world(options.worldFile.empty() ? std::nullopt : std::optional<World>(worldIn(options.worldFile))),
      server(withFaults(
          serverOptions(options, std::move(sockets), context), faults,
          [this](auto delay, auto action) { server.postLater(delay, std::move(action)); },
          [this](const auto& client) { television.clientCut(client); })),
      television(server, {faults, [](auto time) { std::this_thread::sleep_for(time); }, [this] { restart(); }}) {
    server.addEndpoint({"device", options.deviceSocketPath, SettingsHandlerKit::Origin::DEVICE},
                       television.deviceClients());
    television.openStorage(options.storageFile, std::make_shared<SettingsHandlerKit::Disk>());
    // From here on signals wait for the loop, so that even one during the start ends in a clean stop.
    server.handleSignals(onHangUp);
    television.startHandler(world);
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

/// The second of two restarts at once has nothing left to do, nor has one after SIGTERM.
void Composition::restart() {
    auto sockets = server.handOver();
    if (!sockets.isEmpty()) {
        next = NextRun{std::move(sockets), std::make_unique<HeldSignals>()};
    }
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
