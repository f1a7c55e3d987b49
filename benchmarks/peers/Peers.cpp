#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Contender.h"
#include "Peer.h"
#include "host/client/Server.h"
#include "support/Arguments.h"

namespace Benchmarks {

namespace {

/// In each round everybody has several short turns, so that a busy moment of the machine hits all of them.
constexpr int turnsInRound = 10;

/// Is the bridge to D-Bus compared, in place of the host?
bool isOnBus(const Arguments& arguments) {
    return arguments.others == std::vector<std::string>{"--bus"};
}

/// Our host and its peers, each changing its setting in turn.
class Race {
public:
    explicit Race(const Arguments& chosen) : arguments(chosen) {}

    void gather();
    /// The bridge to D-Bus in place of the host, and those that it could replace.
    void gatherOnBus();
    void run();
    Results results() const;

private:
    void add(const std::string& name, std::unique_ptr<Peer> peer, int changes) {
        contenders.push_back(std::make_unique<Contender>(name, std::move(peer), arguments.quick ? 5 : changes));
    }
    void addHostnamed(const std::filesystem::path& parent, int changes);

    const Arguments& arguments;
    std::vector<std::unique_ptr<Contender>> contenders;
};

void Race::gather() {
    const std::filesystem::path memory = TestSupport::memoryFolder();
    const std::filesystem::path disk = std::filesystem::temp_directory_path();
    constexpr int many = 60;
    // A disk is slow.
    constexpr int few = 15;
    constexpr int usualLog = 1;
    constexpr int errorsOnly = 3;
    add("host, memory", hostPeer(memory, usualLog), many);
    add("host, memory, errors logged", hostPeer(memory, errorsOnly), many);
    add("relay, nothing stored", relayPeer(), many);
    add("dconf, memory", dconfPeer(memory), many);
    add("sd-bus, nothing stored", busPropertyPeer(), many);
    addHostnamed(memory, many);
    add("QSettings, memory", iniFilePeer(memory, false), many);
    add("host, disk", hostPeer(disk, usualLog), few);
    add("dconf, disk", dconfPeer(disk), few);
    add("QSettings, disk", iniFilePeer(disk, false), few);
    add("QSettings, disk, fsync", iniFilePeer(disk, true), few);
}

void Race::gatherOnBus() {
    const std::filesystem::path memory = TestSupport::memoryFolder();
    const std::filesystem::path disk = std::filesystem::temp_directory_path();
    constexpr int many = 60;
    constexpr int few = 15;
    add("settings-dbus, memory", bridgePeer(memory), many);
    addHostnamed(memory, many);
    add("dconf, memory", dconfPeer(memory), many);
    add("settings-dbus, disk", bridgePeer(disk), few);
    add("dconf, disk", dconfPeer(disk), few);
}

void Race::addHostnamed(const std::filesystem::path& parent, int changes) {
    try {
        add("hostnamed, memory", hostnamedPeer(parent), changes);
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "hostnamed: not measured: %s\n", error.what());
    }
}

void Race::run() {
    for (int round = 1; round <= arguments.rounds; ++round) {
        std::fprintf(stderr, "round %d of %d\n", round, arguments.rounds);
        for (int turn = 0; turn < (arguments.quick ? 1 : turnsInRound); ++turn) {
            for (const auto& contender : contenders) {
                contender->takeTurn();
            }
        }
        for (const auto& contender : contenders) {
            contender->endRound();
        }
    }
}

Results Race::results() const {
    struct Comparison {
        const char* ours;
        const char* other;
        const char* inWords;
        double bar;
    };
    constexpr double none = 0;
    const Comparison comparisons[] = {
        {"host, memory", "dconf, memory", "GSettings with dconf, in memory", 0.05},
        {"host, memory", "sd-bus, nothing stored", "a property of an sd-bus service through dbus-daemon", 0.40},
        // They log nothing.
        {"host, memory, errors logged", "dconf, memory", "GSettings with dconf, in memory", 0.05},
        {"host, memory, errors logged", "sd-bus, nothing stored", "a property of an sd-bus service through dbus-daemon",
         0.40},
        {"host, memory", "relay, nothing stored", "a process that passes lines on", none},
        {"host, memory", "hostnamed, memory", "systemd-hostnamed, in memory", none},
        {"host, memory", "QSettings, memory", "QSettings, in memory, nobody told", none},
        {"host, disk", "dconf, disk", "GSettings with dconf, on the disk", none},
        {"host, disk", "QSettings, disk", "QSettings, on the disk, nobody told", none},
        {"host, disk", "QSettings, disk, fsync", "QSettings, on the disk with fsync, nobody told", none},
        {"settings-dbus, memory", "hostnamed, memory", "systemd-hostnamed, in memory", 0.8},
        {"settings-dbus, memory", "dconf, memory", "GSettings with dconf, in memory", none},
        {"settings-dbus, disk", "dconf, disk", "GSettings with dconf, on the disk", 0.35},
    };
    const std::string where = arguments.oneProcessor ? ", one processor" : "";
    std::map<std::string, const Contender*> byName;
    Results results;
    for (const auto& contender : contenders) {
        byName[contender->name()] = contender.get();
        results.add(Figure{"peers/" + contender->name() + "/change" + where, "us", contender->medians()});
        results.add(Distribution(
            (isOnBus(arguments) ? "Time of a change on D-Bus" : "Time of a change, ours and others") + where,
            contender->name(), contender->latencies()));
    }
    for (const auto& [ours, other, inWords, bar] : comparisons) {
        if (byName.count(ours) != 0 && byName.count(other) != 0) {
            results.add(Ratio{"peers/" + std::string(ours) + " over " + other + where, inWords,
                              quotients(byName.at(ours)->medians(), byName.at(other)->medians()), bar});
        }
    }
    return results;
}

Results measure(const Arguments& arguments) {
    if (arguments.oneProcessor) {
        stayOnOneProcessor();
    }
    Race race(arguments);
    isOnBus(arguments) ? race.gatherOnBus() : race.gather();
    race.run();
    return race.results();
}

}  // namespace

}  // namespace Benchmarks

int main(int count, char** texts) {
    return Benchmarks::measureAndPrint(count, texts, Benchmarks::measure);
}
