#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

namespace Benchmarks {

/// Changes the setting of a peer; lives in its own process.
class Setter {
public:
    Setter() = default;
    virtual ~Setter() = default;
    Setter(const Setter&) = delete;
    Setter& operator=(const Setter&) = delete;

    /// Changes the setting to a text that it never had.
    virtual void set(const std::string& value) = 0;
    /// What has to follow before the next change, after the measured time.
    virtual void settle() {}
};

/// Where the process that observes says what it saw.
class Report {
public:
    explicit Report(int connectedSocket) : socket(connectedSocket) {}

    /// From now on no change is missed.
    void ready() const;
    /// The setting has changed to `value`. `time` was taken as soon as the process knew of a change.
    void seen(std::chrono::steady_clock::time_point time, const std::string& value) const;

private:
    int socket;
};

/// Something that keeps a setting. An object of it has started what it needs.
class Peer {
public:
    Peer() = default;
    virtual ~Peer() = default;
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    /// Called in the process that is to change the setting.
    virtual std::unique_ptr<Setter> connect() const = 0;

    /// Does it tell other processes of changes? If not, a change is over when `Setter::set` returns.
    virtual bool tellsOthers() const { return true; }
    /// Called in the process that is to see changes, and never returns.
    virtual void observe(const Report& report) const = 0;
};

// The peers. Each keeps its files in a fresh folder inside `parent`. Errors: `std::runtime_error`.

/// Our host over its Unix socket, as shipped. Log lines of `logLevel` and more are written.
std::unique_ptr<Peer> hostPeer(const std::filesystem::path& parent, int logLevel);
/// The bridge to D-Bus and our host behind it, on their own message bus.
std::unique_ptr<Peer> bridgePeer(const std::filesystem::path& parent);
/// GSettings with the dconf service, on its own session bus.
std::unique_ptr<Peer> dconfPeer(const std::filesystem::path& parent);
/// A writable property of a service written with sd-bus, on its own message bus. It stores nothing.
std::unique_ptr<Peer> busPropertyPeer();
/// systemd-hostnamed, which stores the machine's pretty name in /etc, with its own message bus and /etc. Needs root.
std::unique_ptr<Peer> hostnamedPeer(const std::filesystem::path& parent);
/// QSettings with a file of the INI format. It notifies nobody. `isSynced`: file and folder are flushed after each
/// change.
std::unique_ptr<Peer> iniFilePeer(const std::filesystem::path& parent, bool isSynced);
/// A process that copies lines from one Unix socket to another and stores nothing: the least that a change costs which
/// goes from one process through a second one to a third.
std::unique_ptr<Peer> relayPeer();

}  // namespace Benchmarks
