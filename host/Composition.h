#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "BackupSchedule.h"
#include "Options.h"
#include "SettingsHandler/SettingsHandler.h"
#include "SettingsHandlerKit/PassedSockets.h"
#include "SettingsHandlerKit/Sandbox.h"
#include "handler/BoundedStorage.h"
#include "handler/HandlerCache.h"
#include "server/loop/EventLoop.h"
#include "server/metrics/HealthReport.h"
#include "server/metrics/ServerMetrics.h"
#include "server/protocol/MessageHub.h"
#include "server/protocol/TrafficObservers.h"
#include "server/sockets/Backlog.h"
#include "server/sockets/SocketFile.h"
#include "server/sockets/UnixSocketListener.h"
#include "server/web/PageFiles.h"
#include "server/web/WebServer.h"
#include "simulation/DeviceConsole.h"
#include "simulation/MessageTrace.h"
#include "simulation/SimulatedAppLaunch.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/SimulatedSdkBridge.h"
#include "storage/Database.h"
#include "storage/Recovery.h"
#include "storage/StorageParts.h"
#include "storage/TableStateStore.h"

namespace SettingsHost {

/// The whole host, built and wired: the only place that names concrete types. Everything runs on the thread that made
/// it.
class Composition {
public:
    /// Opens port, pages, sockets and database, makes and starts the handler, then opens the listeners and enters the
    /// sandbox. What can fail comes first, so that a host that cannot start logs the reason and little else.
    /// Handles SIGINT and SIGTERM, and SIGHUP: with `onHangUp` it calls that, otherwise it stops the host unless it is
    /// ignored. Errors: `DatabaseError`, `ListenerError`, `std::runtime_error` for pages that cannot be read.
    /// Listeners use `sockets` instead of what the options say: `settings`, `device` and `web`. `context` holds the
    /// request that is being handled.
    Composition(const Options& options, SettingsHandlerKit::PassedSockets sockets,
                const std::shared_ptr<SettingsHandlerKit::RequestContext>& context,
                const std::function<void()>& onHangUp);
    ~Composition();

    Composition(const Composition&) = delete;
    Composition& operator=(const Composition&) = delete;

    /// The line for the person who started the host, now that all listeners are open.
    std::string readyLine() const;
    /// Serves until one of the signals, then closes the listeners and drains the clients.
    void run();

private:
    void startHandler();
    void setUnusableLocaleAside();
    void openListeners(const Options& options);
    void openWebServer(const Options& options);
    SettingsHandlerKit::SandboxFolders foldersInUse(const std::string& logFile) const;
    std::string pageAddress() const;
    std::optional<std::string> renewPageAddress();
    std::string status() const;

    // Members go in reverse order: listeners before the handler, the handler before its storage.
    SettingsHandlerKit::EventLoop loop;
    /// Opened first, so that a host that cannot have the port changes nothing.
    std::unique_ptr<SettingsHandlerKit::TcpListener> webListener;
    SettingsHandlerKit::PageFiles pages;
    std::unique_ptr<SettingsHandlerKit::SocketFile> settingsSocket;
    std::unique_ptr<SettingsHandlerKit::SocketFile> deviceSocket;
    std::optional<SettingsHandlerKit::WebAddress> webAddress;
    std::string webKey;
    std::shared_ptr<SettingsHandlerKit::TrafficObservers> traffic;
    std::shared_ptr<MessageTrace> trace;
    std::shared_ptr<SettingsHandlerKit::Backlog> backlog;
    std::shared_ptr<SettingsHandlerKit::MessageHub> hub;
    std::shared_ptr<SettingsHandlerKit::ServerMetrics> metrics;
    SettingsHandlerKit::Recovery recovery;
    SettingsHandlerKit::Database database;
    SettingsHandlerKit::SqliteStorage storage;
    SettingsHandlerKit::BoundedStorage boundedStorage;
    SettingsHandlerKit::TableStateStore state;
    SettingsHandlerKit::TableStateStore webState;
    std::shared_ptr<SimulatedDevice> device;
    std::shared_ptr<SimulatedSdkBridge> sdkBridge;
    std::shared_ptr<SimulatedAppLaunch> appLaunch;
    std::shared_ptr<SettingsHandler::SettingsHandler> handler;
    std::shared_ptr<SettingsHandlerKit::HandlerCache> handlerCache;
    std::unique_ptr<DeviceConsole> console;
    std::unique_ptr<SettingsHandlerKit::UnixSocketListener> settingsListener;
    std::unique_ptr<SettingsHandlerKit::UnixSocketListener> deviceListener;
    std::unique_ptr<SettingsHandlerKit::WebServer> webServer;
    SettingsHandlerKit::HealthReport health;
    BackupSchedule backups;
};

}  // namespace SettingsHost
