#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulation/Choices.h"
#include "simulation/Judge.h"
#include "simulation/Operations.h"
#include "simulation/SimulatedHost.h"

namespace SettingsSimulation {

/// What is written down of a run, for a scenario.
struct Step {
    std::int64_t time;
    std::string at;
    /// "sent", "received", "did", "closed" or "closedByHost".
    std::string kind;
    std::string text;
};

/// Operations on a simulated host, judged one by one.
class Run {
public:
    /// The choices of the simulation follow from the seed.
    /// `knownTexts`: for what would have come.
    Run(std::uint64_t seed, bool writesSteps, KnownTexts knownTexts = {});

    /// Does the operations. Returns: what the host did wrong; nothing when all was right.
    std::optional<Finding> play(const std::vector<Operation>& operations);

    /// How many operations were done.
    std::size_t done() const { return doneOperations; }
    const std::vector<Step>& steps() const { return written; }
    const KnownTexts& texts() const { return judge.texts(); }
    std::uint64_t fingerprint() const { return host.fingerprint(); }

private:
    void perform(const Operation& operation);
    void performAtHost(const Operation& operation);
    using Connections = std::map<std::size_t, std::shared_ptr<Connection>>;

    void proceed(int steps);
    void observe(bool isSettled);
    void look(bool isSettled, bool isCrashed);
    void setReading(Connection& connection, bool reads);
    void decide();
    void repairDisk();
    void restart();
    void stop();
    void endStop();
    void hasStarted();
    Connections::iterator forget(Connections::iterator entry);
    void end(const char* how);
    void start();
    std::shared_ptr<Connection> client(std::size_t slot);
    void send(std::size_t slot, const std::string& frame);
    void sendPart(const Operation& operation);
    void resume(const Operation& operation);
    void endOutput(std::size_t slot);
    void close(std::size_t slot);
    void advance(std::int64_t milliseconds);
    void noteRun();
    void write(const std::string& at, const std::string& kind, const std::string& text);
    std::string nameOf(std::size_t connection);

    SeededChoices choices;
    SimulatedHost host;
    Judge judge;
    /// By slot.
    Connections open;
    std::vector<std::string> runs;
    std::int64_t lastLook = 0;
    long diskFailures = 0;
    long diskCalls = 0;
    int starts = 0;
    bool isRepairing = false;
    std::size_t doneOperations = 0;
    const bool writes;
    const KnownTexts knownTexts;
    std::vector<Step> written;
    std::map<std::size_t, Kind> kinds;
    std::map<std::size_t, std::string> names;
    std::map<Kind, int> counts;
};

}  // namespace SettingsSimulation
