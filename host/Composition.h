#pragma once

#include <memory>
#include <string>

#include "Options.h"
#include "SettingsHandler/SettingsHandler.h"
#include "commands/DeviceCommands.h"
#include "device/SimulatedAppLaunch.h"
#include "device/SimulatedDevice.h"
#include "metrics/ChangeCounter.h"
#include "sdk/SimulatedSdkBridge.h"
#include "storage/Database.h"
#include "storage/SqliteStorage.h"
#include "storage/TableStateStore.h"
#include "transport/EventLoop.h"
#include "transport/MessageHub.h"
#include "transport/UnixSocketDoor.h"

namespace SettingsHost {

/// The whole host, built and wired: the only place that names concrete types. Everything runs on the thread that made
/// it.
class Composition {
public:
    /// Opens the database, makes and starts the handler, then opens the doors. Takes SIGINT and SIGTERM over, and
    /// SIGHUP unless it is ignored. Errors: `DatabaseError`, `DoorError`.
    explicit Composition(const Options& options);
    ~Composition();

    Composition(const Composition&) = delete;
    Composition& operator=(const Composition&) = delete;

    /// What to tell the person who started the host, now that all doors listen.
    std::string readyLine() const;
    /// Serves until one of the signals, then closes the doors and sends what waits.
    void run();

private:
    void startHandler();
    void setUnusableLocaleAside();
    void openDoors(const Options& options);
    void executeDeviceCommand(Client& client, const std::string& frame);

    // Members go in reverse order: doors before the handler, the handler before its storage.
    EventLoop loop;
    std::shared_ptr<MessageHub> hub;
    Database database;
    SqliteStorage storage;
    TableStateStore state;
    std::shared_ptr<SimulatedDevice> device;
    std::shared_ptr<SimulatedSdkBridge> sdkBridge;
    std::shared_ptr<SimulatedAppLaunch> appLaunch;
    std::shared_ptr<ChangeCounter> metrics;
    std::shared_ptr<SettingsHandler::SettingsHandler> handler;
    DeviceCommands deviceCommands;
    std::unique_ptr<UnixSocketDoor> settingsDoor;
    std::unique_ptr<UnixSocketDoor> deviceDoor;
};

}  // namespace SettingsHost
