#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerKit/Disk.h"
#include "SettingsHandlerKit/Server.h"
#include "SettingsHandlerKit/ServerOptions.h"
#include "SettingsHandlerKit/StateStore.h"
#include "SettingsHandlerKit/Storage.h"
#include "simulation/ClientsWithFaults.h"
#include "simulation/DeviceConsole.h"
#include "simulation/Faults.h"
#include "simulation/MessageTrace.h"
#include "simulation/SimulatedAppLaunch.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/SimulatedSdkBridge.h"
#include "simulation/World.h"

namespace SettingsHost {

/// `options` with the faults of the connections and of the clock. `later` calls an action from the server's loop; `cut`
/// is told of a client that is cut.
SettingsHandlerKit::ServerOptions withFaults(SettingsHandlerKit::ServerOptions options,
                                             const std::shared_ptr<Faults>& faults,
                                             const ClientsWithFaults::Later& later, const ClientsWithFaults::Cut& cut);

/// What a server serves: the handler with its storage, and a simulated voice SDK and device with their console and
/// faults. The server outlives it, but not while it serves. One thread only.
class Television {
public:
    /// What a television asks of the system.
    struct Surroundings {
        std::shared_ptr<Faults> faults;
        /// Blocks, as a slow disk and a slow voice SDK do.
        std::function<void(std::chrono::milliseconds)> sleep;
        /// Makes the fault "restart" happen.
        std::function<void()> restart;
    };

    Television(SettingsHandlerKit::Server& server, Surroundings surroundings);

    Television(const Television&) = delete;
    Television& operator=(const Television&) = delete;

    /// Who is told of the clients of the device's endpoint.
    SettingsHandlerKit::ClientListener& deviceClients() { return console; }
    /// A fault has cut the connection of `client`.
    void clientCut(const SettingsHandlerKit::Client& client) { trace->clientCut(client); }
    /// Opens the database. Errors: `DatabaseError`.
    void openStorage(const std::string& file, std::shared_ptr<SettingsHandlerKit::Disk> disk);
    /// Makes the handler and what it needs, in the state of `world` if there is one; the storage is open.
    /// Errors: `std::runtime_error` for a world that cannot be stored.
    void startHandler(const std::optional<World>& world);

private:
    void defineFaults();

    SettingsHandlerKit::Server& server;
    const Surroundings system;
    std::shared_ptr<MessageTrace> trace;
    DeviceConsole console;
    std::unique_ptr<SettingsHandlerKit::Storage> storage;
    std::unique_ptr<SettingsHandlerKit::StateStore> state;
    std::shared_ptr<SimulatedDevice> device;
    std::shared_ptr<SimulatedSdkBridge> sdkBridge;
    std::shared_ptr<SimulatedAppLaunch> appLaunch;
    std::shared_ptr<SettingsHandlerKit::CheckedSettingsHandler> handler;
};

}  // namespace SettingsHost
