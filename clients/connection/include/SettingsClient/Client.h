#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "SettingsClient/Answer.h"
#include "SettingsClient/Errors.h"
#include "SettingsClient/Notification.h"
#include "SettingsClient/Setting.h"
#include "SettingsClient/SocketCandidates.h"

namespace SettingsClient {

class Session;

/// How a `Client` connects.
struct Options {
    /// Events of changes that this client asks for carry this name: 1 to 64 characters, no control characters. Message
    /// ids begin with it.
    std::string name;
    /// The sockets to try, in this order; by default those of the user's own host and of the system's.
    std::vector<SocketCandidate> sockets = defaultSettingsSockets();
    /// How long each attempt to connect, each sending and each wait for a reply may take.
    std::chrono::milliseconds timeout{5000};
};

/// A client of the settings of a host, at its Unix socket. The simplest use:
///
///     Client client({"kitchen-remote"});
///     const Answer answer = client.set("deviceName", "Kitchen");
///     if (!answer.accepted()) {
///         std::cerr << answer.message << std::endl;
///     }
///
/// **Requests** wait for the host's reply, at first without sleep: for at most 100 microseconds, in which they yield
/// the processor. Without a connection they connect first. Errors of all of them: `ConnectionError`,
/// `InvalidSocketPath`, `UnexpectedResponse`, `RequestRefused`.
///
/// **Observers** are called by `process` (or `run`) alone, but see `onEvent`: for each event once and in order, also
/// across a lost connection, after which `process` reconnects automatically, in intervals from 0.1 to 5 seconds. Where
/// that cannot be done (the host was restarted, or has forgotten the events), `onReread` is told so. Observers may send
/// requests and set other observers; an exception of one leaves `process`, and the next call goes on with the next
/// notification.
///
/// **Older hosts**, of version 1.0, give no answers. `set`, `openSettings` and `logOut` then work without a reason for
/// a refusal; after a lost connection all values are to be read again; batches, history, catalogue and the
/// administration throw `NotSupported`.
///
/// Threads: one at a time; it has none of its own.
class Client {
public:
    /// Does not connect yet. Errors: `std::system_error` when the process has no descriptor left.
    explicit Client(Options options);
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// Connects, unless it is connected, and waits until the host says who it is.
    void connect();
    /// True from a successful attempt to connect until the connection is lost.
    bool isConnected() const;
    /// The path of the socket that it is, or was last, connected to; empty before.
    std::string socketPath() const;
    /// The version of the wire that the host speaks: "1.1.0"; "1.0.0" for every host that does not say. Connects first.
    std::string wireVersion();

    /// @name Requests
    /// @{

    /// Reads the values of `keys`, or of all settings when `keys` is empty.
    /// - Returns: the values by key, without the keys that have none.
    std::map<std::string, std::string> get(const std::vector<std::string>& keys = {});
    /// Sets the setting `key`. `timestamp` is that of `Assignment`.
    Answer set(const std::string& key, const std::string& value, std::optional<std::int64_t> timestamp = std::nullopt);
    /// Sets several settings at once: all of them reach the disk together, or none does. As many as are too many for
    /// one frame (64 requests, 64 KiB) go as several batches, one after the other.
    /// - Returns: an answer for each, in this order.
    /// - Errors: also `NotSupported`.
    std::vector<Answer> setAll(const std::vector<Assignment>& assignments);
    /// Is this assistant the selected one?
    bool isSelected();
    /// Opens the assistant's settings application on the device.
    Answer openSettings();
    /// Logs the user out.
    Answer logOut();
    /// The events that the host remembers: the newest `limit` (1 to 1,024; nothing: all), of `key` alone unless it is
    /// empty, the oldest first. It forgets them at a log-out and when it ends.
    /// - Errors: also `NotSupported`.
    std::vector<Event> history(const std::string& key = "", std::optional<int> limit = std::nullopt);
    /// From now on events of changes that are asked for carry this name in place of `Options::name`, for a client that
    /// passes the requests of others on. Same limits; empty: its own name again.
    void actFor(const std::string& name);
    /// All settings that the host has. Errors: also `NotSupported`.
    std::vector<Setting> catalogue();
    /// @}

    /// @name Administration
    /// Errors: also `NotSupported`; `RequestRefused` with the code "not-stored" when it failed.
    /// @{

    /// The address of the settings pages with its key, which is replaced first if `newKey`.
    /// - Returns: nothing from a host without pages.
    std::optional<std::string> pageAddress(bool newKey = false);
    /// Backs the database up. Returns: the file.
    std::string backUp();
    /// The host's health, versions, disk space, newest time stamps and clock, as the JSON text of one object.
    std::string status();
    /// @}

    /// @name Observers
    /// Each replaces the one before; none: nobody is told.
    /// @{

    /// Is called for each change of a setting. If `atOnce`, also while `set`, `setAll`, `openSettings` and `logOut`
    /// wait for their answers, so that the events that come before an answer are told before it returns; then it must
    /// not send requests or throw.
    void onEvent(std::function<void(const Event&)> observer, bool atOnce = false);
    /// Is called for values that may have changed without an event.
    void onReread(std::function<void(const Reread&)> observer);
    /// Is called when the host serves a new connection, after what happened meanwhile was told.
    void onConnected(std::function<void()> observer);
    /// Is called with the reason when the connection is lost, and when `process` cannot connect for the first time; not
    /// for further attempts that fail.
    void onDisconnected(std::function<void(const std::string& reason)> observer);
    /// @}

    /// @name On somebody's own loop
    /// Watch the descriptor for reading and call `process` whenever it is readable. It is the same one as long as the
    /// client exists, and becomes readable, too, when an attempt to connect is due.
    /// @{

    /// Becomes readable when there is something for `process` to do.
    int fileDescriptor() const;
    /// Calls the observers, and connects when it is time; waits for nothing. Errors: those of observers;
    /// `InvalidSocketPath`.
    void process();
    /// @}

    /// Waits and calls `process` until `stop`. Errors: as `process`.
    void run();
    /// Ends `run` soon; for observers.
    void stop();

private:
    const std::unique_ptr<Session> session;
};

}  // namespace SettingsClient
