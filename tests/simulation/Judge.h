#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "simulation/HostModel.h"
#include "simulation/SimulatedHost.h"

namespace SettingsSimulation {

/// The host did what it must not do.
class Finding : public std::runtime_error {
public:
    Finding(const std::string& what, std::string whatWasExpected, std::string whatCame)
        : std::runtime_error(what), expected(std::move(whatWasExpected)), came(std::move(whatCame)) {}

    std::string expected;
    std::string came;
};

/// Judges all that the host does by the model: every frame on every connection, and what is stored after every start.
///
/// Where the model cannot know what happened, such as whether a disk that fails let a write through, it follows all
/// that can have happened, until what comes decides.
class Judge {
public:
    /// With `remembersAwaited`: for a scenario.
    explicit Judge(bool remembersAwaited);

    /// @name What clients do
    /// @{
    void connected(std::size_t connection, Kind kind);
    void sent(std::size_t connection, const std::string& frame);
    /// At a Unix socket.
    void sentBytes(std::size_t connection, const std::string& bytes);
    /// The host must close this WebSocket with one of these statuses.
    void mustBeClosed(std::size_t connection, std::set<int> statuses);
    void closed(std::size_t connection);
    void endedOutput(std::size_t connection);
    void reads(std::size_t connection, bool isReading);
    /// @}

    /// What came since the last call.
    struct Observed {
        std::vector<Handled> handled;
        struct OfConnection {
            std::size_t connection;
            std::vector<std::string> frames;
            bool isClosedByHost;
            int closeStatus;
        };
        std::vector<OfConnection> connections;
        /// The machine's clock, at the last call and now.
        std::int64_t before = 0;
        std::int64_t now = 0;
        /// Nothing more can happen without time.
        bool isSettled = false;
        /// The host runs.
        bool isRunning = false;
        /// It was killed in the middle of something.
        bool isCrashed = false;
        /// A use of the disk failed that was not told to by a fault of the host.
        bool diskFailed = false;
        bool diskWasUsed = false;
    };
    void observe(const Observed& observed);

    /// The host is gone, whatever the reason.
    void ended();
    /// It has started, with these values.
    void started(const std::map<std::string, std::string>& stored);

    /// In how many ways it can have been.
    std::size_t possibilities() const { return states.size(); }
    /// Has the host started, and not ended?
    bool isUp() const { return !states.empty(); }
    bool restartWasAsked() const { return isUp() && states.front()->model.restartWasAsked(); }
    /// Would there be too many possibilities if the host handled now what this client has sent?
    bool isTooMuch(std::size_t connection) const;
    /// As far as it is known.
    const std::string& run() const { return states.front()->model.run; }
    long newestSequence() const { return states.front()->model.newestSequence(); }
    /// What had to come at a connection when there was a finding; for a scenario.
    std::vector<std::string> awaited(std::size_t connection, const KnownTexts& texts) const;
    /// Of what came; for a scenario.
    const KnownTexts& texts() const { return knownTexts; }

private:
    struct Pending {
        std::shared_ptr<Expectation> frame;
        /// By the machine's clock.
        std::int64_t earliest;
        std::int64_t latest;
        bool isOptional;
        /// Of the frame that the host was handling when it ended: changes that were on the disk.
        long persisted;
        /// It is late, or of a batch that is read again.
        bool isSentLater = false;
    };
    /// What must come, by connection; without those where nothing must.
    using Queues = std::map<std::size_t, std::vector<Pending>>;
    /// One way how it can have been.
    struct State {
        HostModel model;
        Queues queues;
        /// Connections that the host must close, with the status.
        std::map<std::size_t, int> closing;
        bool storageWorked = false;
        /// Set when the host ended while it handled a frame: what was on the disk before that frame.
        std::optional<Durable> before;
        std::vector<Durable> ghostsBefore;
        long reachedStep = 0;
    };
    struct Client {
        Kind kind;
        std::deque<std::optional<std::string>> waiting;
        std::string line;
        bool isOpen = true;
        bool hasJoined = false;
        bool isReading = true;
        bool hasEndedOutput = false;
        bool mayBeClosed = false;
        std::set<int> closeStatuses;
        std::size_t unread = 0;
    };

    using States = std::vector<std::unique_ptr<State>>;

    static std::string name(std::size_t connection);
    static std::string shown(const std::optional<std::string>& frame);

    bool isQuiet(const Observed& observed) const;
    /// `now`: when the host has done all that followed.
    void handle(const Handled& handled, std::int64_t now);
    void crash(const Handled& handled);
    void follow(std::unique_ptr<State> state, const Handled& handled, bool keepsSteps, States& after);
    void step(State& state, const Handled& handled, const DiskFate& fate, bool keepsSteps, bool mayLeaveGhosts);
    static std::vector<DiskFate> fates(long uses, bool diskFailed);
    void send(State& state, const std::vector<Output>& outputs, std::int64_t begin, std::int64_t end,
              bool isSentLater = false);
    void release(State& state, std::int64_t now);
    void readAgain(std::int64_t begin, std::int64_t end);
    void checkIds(const Observed::OfConnection& came);
    void rule(const Observed& observed);
    using Queue = std::vector<Pending>;
    static Queue::iterator find(Queue& queue, Queue::iterator next, const std::string& frame, std::string& run);
    static bool agrees(State& state, const Observed::OfConnection& came);
    void receive(const Observed& observed);
    /// Returns: why it cannot have been so; nothing if it can.
    std::optional<Finding> receive(State& state, const Observed& observed);
    std::optional<Finding> receive(State& state, const Observed::OfConnection& came, std::int64_t now);
    std::optional<Finding> complete(State& state, const Observed& observed);
    std::optional<Finding> completeClient(State& state, const Observed::OfConnection& came, std::int64_t now);
    void unite();
    static std::uint64_t digest(const State& state);

    States states;
    Queues queuesBefore;
    std::string runBefore;
    KnownTexts knownTexts;
    /// What may be on the disk while no host runs.
    std::vector<Durable> onDisk;
    std::map<std::size_t, Client> clients;
    /// Events by their message ids.
    std::unordered_map<std::string, std::string> events;
    std::set<std::string> formerRuns;
    const bool remembers;
    bool wasSettled = false;
};

}  // namespace SettingsSimulation
