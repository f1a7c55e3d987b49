#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "SettingsHandlerKit/Server.h"
#include "server/BackupSchedule.h"
#include "server/StoredTransactions.h"
#include "server/loop/Delays.h"
#include "server/loop/EventLoop.h"
#include "server/loop/RepeatingTimer.h"
#include "server/metrics/HealthReport.h"
#include "server/metrics/ServerMetrics.h"
#include "server/protocol/Administration.h"
#include "server/protocol/MessageHub.h"
#include "server/protocol/TrafficObservers.h"
#include "server/sockets/Backlog.h"
#include "server/sockets/SocketFile.h"
#include "server/sockets/TcpListener.h"
#include "server/sockets/UnixSocketListener.h"
#include "server/web/PageFiles.h"
#include "server/web/WebServer.h"

namespace SettingsHandlerKit {

/// A Unix socket, if it has one, and who is told of its clients.
struct OpenEndpoint {
    std::string name;
    Origin origin;
    ClientListener& clients;
    std::string path;
    /// Until it is opened. Null without one.
    std::unique_ptr<SocketFile> socket;
    std::unique_ptr<UnixSocketListener> listener;
};

struct Server::Parts : Administration {
    /// Of a server's life. CREATED until `start`.
    enum class Phase { CREATED, SERVING, DRAINING, ENDED };

    explicit Parts(ServerOptions chosenOptions);

    void addEndpoint(const std::string& name, const std::optional<std::string>& path, Origin origin,
                     ClientListener& clients);
    void openListeners();
    void openWebServer();
    std::string cookieSecret();
    std::string randomHex(std::size_t bytes) const;
    void watch(Storage& watched);
    std::string pageAddress() const override;
    std::optional<std::string> renewPageKey() override;
    std::string backUp() override;
    Wire::StatusReply status() override;
    /// The addresses of what is open, with a blank between them.
    std::string startText() const;
    HttpResponse healthResponse();

    void performPosted(const std::function<void()>& action);
    void tellServiceManager();
    void requestStop();
    PassedSockets handOver();
    /// Until `stop`, and then until the clients are gone.
    void serve();
    void turn();
    void beginStop();
    void closeNow();

    // Members go in reverse order: listeners first, the loop last.
    ServerOptions options;
    EventLoop loop;
    Delays delays;
    /// Opened first, so that a service that cannot have the port changes nothing.
    std::unique_ptr<TcpListener> webListener;
    PageFiles pages;
    std::optional<WebAddress> webAddress;
    std::string webKey;
    std::shared_ptr<TrafficObservers> traffic;
    std::shared_ptr<Backlog> backlog;
    std::shared_ptr<MessageHub> hub;
    /// Who is told of the clients of the settings: the hub, or what is between.
    std::shared_ptr<ClientListener> settingsClients;
    std::shared_ptr<StoredTransactions> transactions;
    std::shared_ptr<ServerMetrics> metrics;
    HealthReport health;
    HealthTexts healthTexts;
    /// Null without a watched one. Gone when the server has stopped.
    Storage* storage = nullptr;
    /// The first is that of the settings.
    std::vector<OpenEndpoint> endpoints;
    std::unique_ptr<WebServer> webServer;
    std::optional<BackupSchedule> backups;
    /// Of a watchdog of the service manager.
    std::optional<RepeatingTimer> heartbeat;
    /// Is the service manager told when the server stops?
    bool isManaged = false;
    /// Does another server of this process take over?
    bool isHandedOver = false;
    bool stopRequested = false;
    std::atomic<Phase> phase{Phase::CREATED};
    std::thread thread;
};

}  // namespace SettingsHandlerKit
