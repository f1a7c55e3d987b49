#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "HeldSignals.h"
#include "Options.h"
#include "SettingsHandlerKit/Server.h"
#include "Television.h"
#include "simulation/Faults.h"
#include "simulation/World.h"

namespace SettingsHost {

/// What a host leaves for the one after it, when it is to start again.
struct NextRun {
    SettingsHandlerKit::PassedSockets sockets;
    /// Until the next host handles them.
    std::unique_ptr<HeldSignals> signals;
};

/// The whole host: the kit's server around a simulated television, as the options say. Everything runs on the thread
/// that made it.
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
    void restart();
    void enterSandbox(const Options& options);

    /// Nothing without one to start with.
    const std::optional<World> world;
    const std::shared_ptr<Faults> faults = std::make_shared<Faults>();
    SettingsHandlerKit::Server server;
    Television television;
    std::string ready;
    std::optional<NextRun> next;
};

}  // namespace SettingsHost
