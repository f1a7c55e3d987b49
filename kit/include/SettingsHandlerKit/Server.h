#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "DeviceAbstractionLayer/AppLaunch.h"
#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "Metrics/MetricsDelegateInterface.h"
#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerKit/ClientListener.h"
#include "SettingsHandlerKit/ListenerError.h"
#include "SettingsHandlerKit/Observation.h"
#include "SettingsHandlerKit/Sandbox.h"
#include "SettingsHandlerKit/ServerOptions.h"
#include "SettingsHandlerKit/Storage.h"
#include "SettingsHandlerKit/TrafficObserver.h"
#include "SettingsHandlerKit/ValueObserver.h"
#include "teskVessa/SDKBridgeInterface.h"

namespace SettingsHandlerKit {

/// Serves the settings: an event loop with a Unix socket and a web port, and the transport, metrics and backup schedule
/// of the handler. The simplest service:
///
///     Server server(std::move(options));
///     Storage storage(path);
///     auto handler = server.createHandler(storage, bridge, launcher, info);
///     std::puts(server.start().c_str());
///     server.run();
///
/// Threads: the server has one thread, which makes every call of the handler and of what it is given. It is the one
/// that calls `run`, the one of `startThread`, or the one that calls `process`. Operations are called on this thread,
/// before it runs on any one; `post` and `stop` may be called on any thread.
///
/// Storage and handler may be destroyed before the server, but not while it serves: after `run` has returned, after
/// `join`, or when `isRunning` is false. The program ignores SIGPIPE, see Process.h.
class Server {
public:
    /// Opens port, pages and socket, but serves nobody yet: what can fail comes first, so that a service that cannot
    /// start changes nothing. Errors: `ListenerError`; `std::invalid_argument` for a wrong address or origin;
    /// `std::runtime_error` for pages that cannot be read.
    explicit Server(ServerOptions options);
    /// Stops the thread, if there is one, and closes what is open.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Opens the socket of one more endpoint, before `start`. `listener` stays the caller's, as the storage does.
    /// Errors: `ListenerError`; `std::invalid_argument` for a name that cannot be used.
    void addEndpoint(const Endpoint& endpoint, ClientListener& listener);

    /// Makes the handler of this server, sets unusable stored values aside, initialises and migrates it. See `watch`
    /// for what the server does with `storage`. The handler shares the collaborators; the storage stays the caller's.
    /// - Returns: never null. The caller keeps it while the server serves.
    /// - Errors: `std::invalid_argument` that names a null collaborator; `std::runtime_error` when an unusable stored
    ///   value could not be set aside.
    std::shared_ptr<CheckedSettingsHandler> createHandler(
        Storage& storage, std::shared_ptr<teskVessa::SDKBridgeInterface> bridge,
        std::shared_ptr<DeviceAbstractionLayer::AppLaunch> launcher,
        std::shared_ptr<DeviceAbstractionLayer::OrliaDeviceInfoInterface> info);

    /// @name The parts, for those who compose a service themselves
    /// @{

    /// The handler's transport.
    std::shared_ptr<CommunicationHandler::CommunicationHandlerInterface> transport() const;
    /// The handler's metrics, which `/metrics` serves.
    std::shared_ptr<Metrics::MetricsDelegateInterface> metrics() const;
    /// To be told of values that change at their owner without a call of the handler: clients get a notice.
    std::shared_ptr<ValueObserver> valueObserver() const;
    /// For connections that are not sockets, in tests or over a bus: told of clients and their frames, it serves them
    /// like those of the Unix socket. Threads: the server's.
    std::shared_ptr<ClientListener> clients() const;
    /// For an endpoint's listener: tell it of connections, frames and refusals, and they are counted.
    std::shared_ptr<TrafficObserver> traffic() const;
    /// Adds an observer of the traffic of all clients.
    void addTrafficObserver(std::shared_ptr<TrafficObserver> observer);
    /// Options for a handler: GetSettings gathers no more than there is memory for.
    CheckedSettingsHandler::Options handlerOptions() const;
    /// Observes `storage` from now on: its health, metrics and removed values; backs it up once a day; keeps the secret
    /// of the cookies in it; empties the history of events when it is cleared; makes each batch a transaction of it.
    void watch(Storage& storage);
    /// From now on requests that ask for an answer get one, with the outcome of `handler`; a request that it rejects,
    /// or refuses for lack of memory, is reported as such. Without a watched handler `"answer"` is ignored.
    void watch(const std::shared_ptr<CheckedSettingsHandler>& handler);
    /// @}

    /// Calls `action` when the changes of a batch could not be stored and all were rolled back, before the handler
    /// reads all values again (`CheckedSettingsHandler::startOver`): read again what you keep in memory of a
    /// `StateStore` of the watched storage. What a voice SDK or a device keeps elsewhere is not rolled back; clients
    /// are told to read it again. An exception of `action` is logged at level 3.
    void onRollBack(std::function<void()> action);

    /// Serves from now on: opens the listeners. Requests are handled by `run`, `startThread` or `process`.
    /// - Returns: what a person needs: "http://127.0.0.1:8097/?key=… socket: PATH", without a web port "socket: PATH".
    /// - Errors: `ListenerError`.
    std::string start();
    /// For the sandbox: the folders of the sockets and of the watched storage.
    SandboxFolders foldersInUse() const;

    /// SIGINT and SIGTERM stop the server from now on, also while it starts; SIGHUP calls `onHangUp`, or without one
    /// stops it, too, unless it is ignored (nohup).
    void handleSignals(std::function<void()> onHangUp = nullptr);
    /// Serves on this thread until `stop`. Tells the service manager when it is ready, alive and stopping, and gives
    /// free memory back to the system: the process is the service's. Clients have a grace period to read what waits for
    /// them.
    void run();
    /// Serves on a thread of its own until `stop`. A sandbox is entered on that thread, by `post`.
    void startThread();
    /// Waits for the end of that thread.
    void join();
    /// @name On the caller's event loop
    /// Watch the descriptor for reading, wait no longer than the timeout, then call `process`; repeat while `isRunning`
    /// is true. Ask for the timeout just before each wait: operations of the server may have changed it.
    /// @{

    /// Becomes readable when there is something for `process` to do.
    int fileDescriptor() const;
    /// How long `process` need not be called while the descriptor is not readable; nothing: as long as that.
    std::optional<std::chrono::milliseconds> timeout() const;
    /// Does what is due, and does not wait.
    void process();
    /// @}
    /// True from `start` until the server has stopped and its clients are gone.
    bool isRunning() const;
    /// Ends serving soon; a second call ends the grace period. Threads: any.
    void stop();
    /// Ends serving soon, so that another server of this process takes over. The sockets stay open: clients that
    /// connect meanwhile wait for it. The service manager is told that the service is ready again soon, not that it
    /// stops.
    /// - Returns: the sockets, for the `ServerOptions` of the other server; none when it does not serve or is to
    ///   stop already.
    PassedSockets handOver();

    /// Runs `action` soon on the server's thread, as `perform` does; an exception is logged at level 3. Actions run in
    /// the order in which they were posted; none runs after the server has stopped. Threads: any.
    void post(std::function<void()> action);
    /// Like `post`, after `delay`. Threads: the server's.
    void postLater(std::chrono::milliseconds delay, std::function<void()> action);
    /// Runs `action` now. What it changes is the device's doing: events have the origin "device", and clients get a
    /// notice of values that changed without an event.
    void perform(const std::function<void()>& action);

    /// Calls `observer` for each event and each notice of the setting `key`, after the clients were sent it and when
    /// the request or action that caused it is over. Observers may call the handler. An exception of one is logged at
    /// level 3. Threads: any; calls are made on the server's.
    [[nodiscard]] Observation observe(const std::string& key, SettingObserver observer);
    /// The same for all settings.
    [[nodiscard]] Observation observeAll(SettingObserver observer);

    /// How many events the handler has sent: one for each value that it accepted.
    unsigned long eventsSent() const;
    /// The path of the Unix socket; empty without one.
    std::string socketPath() const;
    /// The address of the pages with their key; empty before `start` and without a web port.
    std::string pageAddress() const;
    /// Makes a new key; the old one and its cookies are no longer valid.
    /// - Returns: the new address; nothing without a web port, or when the key could not be stored: nothing has changed
    ///   then.
    std::optional<std::string> renewPageKey();
    /// What `/metrics` serves.
    std::string metricsText() const;
    /// What `/healthz` serves.
    std::string healthText() const;
    /// From now on `/healthz` has the member `name` with what `texts` returns, unless that is empty.
    void addToHealth(const std::string& name, std::function<std::vector<std::string>()> texts);

protected:
    struct Parts;
    /// The implementation; protected for the kit's own tests.
    const std::unique_ptr<Parts> parts;
};

}  // namespace SettingsHandlerKit
