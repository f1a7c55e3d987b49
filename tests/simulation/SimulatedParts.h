#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "VessaLogger/LogSink.h"
#include "simulation/ClientEnd.h"
#include "simulation/Fingerprint.h"
#include "simulation/HostProcess.h"
#include "simulation/SimulatedDisk.h"
#include "simulation/SimulatedHost.h"
#include "simulation/VirtualClock.h"

namespace SettingsSimulation {

/// The inside of a simulation: the machine, its host's process and the clients.
struct SimulatedHost::Parts {
    struct Client {
        std::shared_ptr<Link> link;
        std::shared_ptr<ClientEnd> end;
        /// Null until the host accepts it, and when the host is gone.
        std::shared_ptr<MemoryStream> stream;
    };
    /// What can happen in a step.
    struct Event {
        enum class Kind { TURN, READ, WRITE, RECEIVE };

        Kind kind;
        std::size_t client;
    };

    explicit Parts(Choices& allChoices);
    ~Parts();
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;

    bool start();
    /// The process ends in this moment, maybe inside a call of it; its objects go with `bury`.
    void die(bool powerIsCut);
    void bury();
    /// The host has stopped.
    void ended();

    std::shared_ptr<Connection> connect(Kind kind);
    void accept(Client& client);

    bool step();
    std::size_t settle();
    void collectEvents();
    void happen(const Event& event);
    void receive(Client& client);

    HostProcess::Surroundings surroundings();
    void handle(std::size_t connection, const std::optional<std::string>& frame, const std::function<void()>& action);
    std::int64_t hostTime() const;
    void logged(const VessaLogger::LogLine& line);

    Choices& choices;
    VirtualClock clock;
    const std::shared_ptr<SimulatedDisk> disk;
    std::unique_ptr<HostProcess> process;
    State state = State::OFF;
    std::string startFailure;
    bool isDying = false;
    bool losesPower = false;
    bool startsAgain = false;
    /// Something was posted to the loop.
    bool turnWanted = false;
    std::vector<Client> clients;
    std::size_t lastNumber = 0;
    /// The connection whose bytes the host reads.
    std::size_t reading = 0;
    std::vector<Event> events;
    std::vector<Handled> handled;
    LogObserver logObserver;
    Fingerprint fingerprint;
};

}  // namespace SettingsSimulation
