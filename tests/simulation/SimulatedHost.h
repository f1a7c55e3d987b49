#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VessaLogger/Log.h"
#include "simulation/Choices.h"
#include "simulation/Faults.h"

namespace SettingsSimulation {

/// Where a client connects.
enum class Kind { SOCKET, PAGE, DEVICE };

/// A client's end of a connection. It stays usable when the host is gone: then nothing more comes, and what is sent is
/// lost.
class Connection {
public:
    virtual ~Connection() = default;

    /// 1, 2, 3 … over all starts of a simulation.
    virtual std::size_t number() const = 0;
    virtual Kind kind() const = 0;

    /// Sends one frame as this kind of connection does: a line or a WebSocket text message.
    virtual void send(const std::string& frame) = 0;
    /// Sends bytes as they are. On a page they go to the open WebSocket, behind its handshake.
    virtual void sendBytes(const std::string& bytes) = 0;
    /// The frames that have arrived since the last call, whole and in order. Pings of a WebSocket are answered.
    virtual std::vector<std::string> take() = 0;
    /// While false, this end does not read: the host's bytes fill the connection, then its backlog.
    virtual void setReading(bool reads) = 0;
    /// Sends no more; the host still sends.
    virtual void endOutput() = 0;
    /// Closes at once, as a program does that ends. What was sent before still arrives.
    virtual void close() = 0;

    /// Neither side has closed it, as far as this end knows.
    virtual bool isOpen() const = 0;
    /// The host has ended it, and this end has read all that came before.
    virtual bool isClosedByHost() const = 0;
    /// Of a WebSocket that the host closed with a status; 0 otherwise.
    virtual int closeStatus() const = 0;
};

/// A frame that the host began to handle: that of a client for the hub, or for the device console.
struct Handled {
    std::size_t connection;
    /// Nothing for one that was too large.
    std::optional<std::string> frame;
    /// The host's clock with the fault clock-jump, in milliseconds since 1970, before and after.
    std::int64_t begin;
    std::int64_t end;
    /// Did `failDiskCalls` let a call of the disk fail meanwhile?
    bool diskFailed;
};

/// The whole `settings-host` in this thread: its listeners, server, handler, storage and SDK on connections, a disk, a
/// clock and random bytes of the simulation. Nothing real: no file, no socket, no time. All that is open is asked of
/// `Choices`. One object at a time in a process, since the clock is the process's.
class SimulatedHost {
public:
    /// A machine with an empty disk, switched on, whose host is not started. The clock shows 1 January 2024.
    explicit SimulatedHost(Choices& choices);
    ~SimulatedHost();
    SimulatedHost(const SimulatedHost&) = delete;
    SimulatedHost& operator=(const SimulatedHost&) = delete;

    /// @name Life
    /// @{

    /// DEAD: killed, or the power was cut, or it could not start. STOPPING: waits for its clients to read.
    enum class State { OFF, RUNNING, STOPPING, DEAD };
    State state() const;
    /// Starts the host on the disk as it is; does nothing while it runs or stops. Its reason when it could not:
    /// `startFailure`.
    /// Returns: whether it runs.
    bool start();
    const std::string& startFailure() const;
    /// SIGTERM: the host stops when its clients have read what waits, or the grace period is over. Steps go on.
    void stop();
    /// SIGKILL: what is in memory is lost; the disk has all that was written.
    void kill();
    /// The same for the machine: of what was not synced, choices say what is lost, torn or in another order. What was
    /// on its way to clients is lost.
    void powerCut();
    /// The same in the middle of something: at the disk's call `calls`, counted from 1 and from now. An end of the host
    /// before disarms it.
    void killAtDiskCall(long calls);
    void powerCutAtDiskCall(long calls);
    /// So many calls of the disk from the call `first` on fail with an I/O error.
    void failDiskCalls(long first, long count = 1);
    /// @}

    /// @name Clients
    /// @{

    /// Connects a client; for a page with the key and the WebSocket's handshake. Without a host that listens, the
    /// connection is closed at once.
    std::shared_ptr<Connection> connect(Kind kind);
    /// What the host began to handle since the last call, in its order.
    std::vector<Handled> takeHandled();
    /// @}

    /// @name Time
    /// @{

    /// Does one of the things that can happen now, by choice: some bytes arrive at one end, a turn of the loop.
    /// Returns: false when nothing can without time.
    bool step();
    /// Steps until nothing can happen without time. Returns: how many.
    std::size_t settle();
    /// Time goes on; timers fire at their times, each followed by `settle`.
    void advance(std::chrono::milliseconds time);
    /// How long until the host's next timer; nothing without one.
    std::optional<std::chrono::milliseconds> nextTimer();
    /// The machine's clock, in milliseconds since 1970; the host's has `clock-jump` on top.
    std::int64_t now() const;
    /// @}

    /// @name Inside
    /// @{

    /// The faults of the running host. All are off after a start.
    SettingsHost::Faults& faults();
    /// Calls of the disk so far; those of them that `failDiskCalls` let fail.
    long diskCalls() const;
    long diskFailures() const;
    /// Files with the content that programs would read, by their names in the storage's folder.
    std::map<std::string, std::string> files() const;
    /// The settings that the storage has, by their keys, as a start now would find them. Looks at the files, whether
    /// the host runs or not.
    std::map<std::string, std::string> storedSettings();
    /// Calls `observer` with each log line of the host; none are kept.
    using LogObserver = std::function<void(VessaLogger::LogLevel level, const std::string& text)>;
    void observeLog(LogObserver observer);
    /// A number of all that could be seen so far: bytes, log lines, disk, time. Two runs with the same choices and
    /// calls have the same.
    std::uint64_t fingerprint() const;
    /// @}

private:
    struct Parts;
    const std::unique_ptr<Parts> parts;
};

}  // namespace SettingsSimulation
