#include "fleet/FleetRound.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <thread>

#include "fleet/BrokerProcess.h"
#include "fleet/Fleet.h"
#include "fleet/Names.h"
#include "fleet/Program.h"
#include "fleet/Spectator.h"
#include "support/ProcessUsage.h"
#include "support/Results.h"

namespace Benchmarks {

namespace {

using Clock = std::chrono::steady_clock;
using Mqtt::Message;

/// A broker's queue of connections that wait to be accepted is short.
std::chrono::milliseconds firstPauseOf(std::size_t televisions) {
    return std::chrono::milliseconds(std::max<std::int64_t>(1000, 4 * static_cast<std::int64_t>(televisions)));
}

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

/// Processor time of both sides since it was made, for one of many.
class Work {
public:
    Work(const Bridges& itsBridges, const BrokerProcess& itsBroker) : bridges(itsBridges), broker(itsBroker) {}

    void addTo(FleetRound& round, const std::string& what, double many) const {
        round[what + ", processor time of the bridge, µs"] = (bridges.processorMicroseconds() - bridgesBefore) / many;
        round[what + ", processor time of the broker, µs"] =
            (TestSupport::processorMicroseconds(broker.pid()) - brokerBefore) / many;
    }

private:
    const Bridges& bridges;
    const BrokerProcess& broker;
    const double bridgesBefore = bridges.processorMicroseconds();
    const double brokerBefore = TestSupport::processorMicroseconds(broker.pid());
};

/// Changes and commands of connected bridges.
class Use {
public:
    Use(Bridges& itsBridges, std::size_t itsSize, const BrokerProcess& itsBroker)
        : bridges(itsBridges), size(itsSize), broker(itsBroker), spectator(broker.port(), topics()) {}

    void measureChanges(FleetRound& round, int count) {
        std::mt19937_64 random{size};
        std::vector<double> latencies(static_cast<std::size_t>(count));
        const Work work(bridges, broker);
        for (double& latency : latencies) {
            latency = changeOne(std::uniform_int_distribution<std::size_t>(0, size - 1)(random));
        }
        work.addTo(round, "change", count);
        std::sort(latencies.begin(), latencies.end());
        round[FleetNames::change] = median(latencies);
        round[FleetNames::slowChange] = latencies[latencies.size() * 99 / 100];
    }

    void measureCommands(FleetRound& round, int count) {
        std::vector<double> times(static_cast<std::size_t>(count));
        const Work work(bridges, broker);
        for (double& time : times) {
            time = command("style " + std::to_string(&time - times.data()));
        }
        work.addTo(round, "command and answer", static_cast<double>(size) * count);
        round[FleetNames::command] = median(times);
    }

private:
    static std::string topicOf(const std::string& whose, const std::string& rest) {
        return "settings/" + whose + "/" + rest;
    }
    static std::vector<std::string> topics() {
        return {topicOf("+", std::string("state/") + changedKey), topicOf("+", "outcome")};
    }

    double changeOne(std::size_t television) {
        const std::string topic = topicOf(televisionName(television), std::string("state/") + changedKey);
        bridges.change(television);
        double latency = 0;
        spectator.receive([&](const Message& message) {
            if (message.topic == topic) {
                const Clock::time_point changed{Clock::duration(std::stoll(message.payload))};
                latency = milliseconds(Clock::now() - changed);
            }
            return message.topic == topic;
        });
        return latency;
    }

    double command(const std::string& value) {
        const auto start = Clock::now();
        spectator.publish(
            {topicOf(std::string("group/") + groupName, std::string("set/") + commandedKey), value, false});
        std::size_t answers = 0;
        spectator.receive([&](const Message& message) {
            if (message.topic.find("/outcome") != std::string::npos) {
                if (message.payload.find("\"changed\"") == std::string::npos) {
                    throw std::runtime_error("a command failed: " + message.payload);
                }
                ++answers;
            }
            return answers == size;
        });
        return milliseconds(Clock::now() - start);
    }

    Bridges& bridges;
    const std::size_t size;
    const BrokerProcess& broker;
    Spectator spectator;
};

}  // namespace

FleetRound measureFleet(std::size_t size, const FleetEffort& effort) {
    FleetRound round;
    const auto count = static_cast<double>(size);
    BrokerProcess broker;
    const double emptyBroker = memoryOf(broker.pid());
    const TelevisionOptions options{broker.port(), 60, firstPauseOf(size)};
    const double emptyProcess = Fleet(0, options).memory();
    Fleet fleet(size, options);
    const Work work(fleet, broker);
    const auto start = Clock::now();
    fleet.connect();
    round[FleetNames::connected] = milliseconds(fleet.waitUntilPublished() - start);
    work.addTo(round, "connection and publication of all values", count);
    {
        Use use(fleet, size, broker);
        use.measureChanges(round, effort.changes);
        use.measureCommands(round, effort.commands);
    }
    round[FleetNames::brokerMemory] = (memoryOf(broker.pid()) - emptyBroker) / 1024 / count;
    round[FleetNames::bridgeMemory] = (fleet.memory() - emptyProcess) / 1024 / count;
    broker.killAndRestart();
    const auto restart = Clock::now();
    try {
        round[FleetNames::connectedAgain] = milliseconds(fleet.waitUntilPublished() - restart);
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "not all of %zu came back: %s\n", size, error.what());
    }
    return round;
}

FleetRound measureIdleFleet(const FleetEffort& effort) {
    // The least that libmosquitto takes.
    constexpr int keepalive = 5;
    const BrokerProcess broker;
    Fleet fleet(effort.idleTelevisions, {broker.port(), keepalive, firstPauseOf(effort.idleTelevisions)});
    fleet.connect();
    fleet.waitUntilPublished();
    FleetRound round;
    const Work work(fleet, broker);
    std::this_thread::sleep_for(std::chrono::seconds(effort.idleSeconds));
    work.addTo(round, "keepalive", static_cast<double>(effort.idleTelevisions) * effort.idleSeconds / keepalive);
    return round;
}

FleetRound measureProgram(const FleetEffort& effort) {
    const BrokerProcess broker;
    Program program(broker.port());
    FleetRound round;
    {
        Spectator spectator(broker.port(), {"settings/+/availability"});
        spectator.receive([](const Message& message) { return message.payload == "online"; });
    }
    Use use(program, 1, broker);
    use.measureChanges(round, effort.changes);
    use.measureCommands(round, effort.changes);
    round[FleetNames::bridgeMemory] = program.memory() / 1024;
    return round;
}

}  // namespace Benchmarks
