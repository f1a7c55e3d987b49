#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "HeldSignals.h"
#include "Options.h"
#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerKit/Server.h"
#include "SettingsHandlerKit/StateStore.h"
#include "SettingsHandlerKit/Storage.h"
#include "simulation/DeviceConsole.h"
#include "simulation/Faults.h"
#include "simulation/MessageTrace.h"
#include "simulation/SimulatedAppLaunch.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/SimulatedSdkBridge.h"
#include "simulation/World.h"

namespace SettingsHost {

/// What a host leaves for the one after it, when it is to start again.
struct NextRun {
    SettingsHandlerKit::PassedSockets sockets;
    /// Until the next host handles them.
    std::unique_ptr<HeldSignals> signals;
};

/// The whole host: the kit's server, storage and handler with a simulated voice SDK and device. The only place that
/// names concrete types. Everything runs on the thread that made it.
class Composition {
public:
    /// Opens port, pages, sockets and database, makes and starts the handler, then opens the listeners and enters the
    /// sandbox. What can fail comes first, so that a host that cannot start logs the reason and little else.
    /// Handles SIGINT and SIGTERM, and SIGHUP: with `onHangUp` it calls that, otherwise it stops the host unless it is
    /// ignored. Errors: `DatabaseError`, `ListenerError`, `WorldError`, `std::runtime_error` for pages that
    /// cannot be read, or a world that cannot be stored.
    /// Listeners use `sockets` instead of what the options say: `settings`, `device` and `web`. `context` holds the
    /// request that is being handled.
    Composition(const Options& options, SettingsHandlerKit::PassedSockets sockets,
                const std::shared_ptr<SettingsHandlerKit::RequestContext>& context,
                const std::function<void()>& onHangUp);

    Composition(const Composition&) = delete;
    Composition& operator=(const Composition&) = delete;

    /// The line for the person who started the host, now that all listeners are open.
    const std::string& readyLine() const { return ready; }
    /// Serves until one of the signals or the fault "restart", then closes the listeners and drains the clients.
    /// Returns: what the next one needs, after a restart.
    std::optional<NextRun> run();

private:
    void startHandler();
    void defineFaults();
    void enterSandbox(const Options& options);

    /// Nothing without one to start with.
    const std::optional<World> world;
    const std::shared_ptr<Faults> faults = std::make_shared<Faults>();
    SettingsHandlerKit::Server server;
    std::shared_ptr<MessageTrace> trace;
    DeviceConsole console;
    std::unique_ptr<SettingsHandlerKit::Storage> storage;
    std::unique_ptr<SettingsHandlerKit::StateStore> state;
    std::shared_ptr<SimulatedDevice> device;
    std::shared_ptr<SimulatedSdkBridge> sdkBridge;
    std::shared_ptr<SimulatedAppLaunch> appLaunch;
    std::shared_ptr<SettingsHandlerKit::CheckedSettingsHandler> handler;
    std::string ready;
    std::optional<NextRun> next;
};

}  // namespace SettingsHost
