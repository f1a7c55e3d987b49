#include "fleet/FleetRound.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <stdexcept>
#include <thread>

#include "fleet/BrokerProcess.h"
#include "fleet/Fleet.h"
#include "fleet/Names.h"
#include "fleet/Spectator.h"
#include "support/Results.h"

namespace Benchmarks {

namespace {

using Clock = std::chrono::steady_clock;
using SettingsMqtt::Message;

double milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

/// Processor time of both sides since it was made, for one of many.
class Work {
public:
    Work(const Fleet& itsFleet, const BrokerProcess& itsBroker) : fleet(itsFleet), broker(itsBroker) {}

    void addTo(FleetRound& round, const std::string& what, double many) const {
        round[what + ", processor time of the bridge, µs"] = (fleet.processorMicroseconds() - fleetBefore) / many;
        round[what + ", processor time of the broker, µs"] =
            (processorMicrosecondsOf(broker.pid()) - brokerBefore) / many;
    }

private:
    const Fleet& fleet;
    const BrokerProcess& broker;
    const double fleetBefore = fleet.processorMicroseconds();
    const double brokerBefore = processorMicrosecondsOf(broker.pid());
};

std::string topicOf(const std::string& whose, const std::string& rest) {
    return "settings/" + whose + "/" + rest;
}

class Measurement {
public:
    Measurement(std::size_t itsSize, const FleetEffort& itsEffort) : size(itsSize), effort(itsEffort) {}

    FleetRound all() {
        const double empty = memoryOf(broker.pid());
        connect();
        Spectator spectator(broker.port(), {topicOf("+", std::string("state/") + changedKey), topicOf("+", "outcome")});
        measureChanges(spectator);
        for (int number = 0; number < effort.commands; ++number) {
            measureCommand(spectator, "style " + std::to_string(number));
        }
        round[FleetNames::command] = median(commands);
        round[FleetNames::brokerMemory] = (memoryOf(broker.pid()) - empty) / 1024 / count();
        round[FleetNames::bridgeMemory] = (fleet.memory() - Fleet(0, broker.port()).memory()) / 1024 / count();
        return round;
    }

    void connectAgain(FleetRound& result) {
        const double before = fleet.processorMicroseconds();
        broker.killAndRestart();
        const auto start = Clock::now();
        result[FleetNames::connectedAgain] = milliseconds(fleet.waitUntilPublished() - start);
        (void)before;
    }

private:
    double count() const { return static_cast<double>(size); }

    void connect() {
        const Work work(fleet, broker);
        const auto start = Clock::now();
        fleet.connect();
        round[FleetNames::connected] = milliseconds(fleet.waitUntilPublished() - start);
        work.addTo(round, "connection and publication of all values", count());
    }

    void measureChanges(Spectator& spectator) {
        std::vector<double> latencies;
        const Work work(fleet, broker);
        for (int number = 0; number < effort.changes; ++number) {
            const std::size_t television = std::uniform_int_distribution<std::size_t>(0, size - 1)(random);
            const std::string topic = topicOf(televisionName(television), std::string("state/") + changedKey);
            fleet.change(television);
            spectator.receive([&](const Message& message) {
                if (message.topic != topic) {
                    return false;
                }
                const Clock::time_point changed{Clock::duration(std::stoll(message.payload))};
                latencies.push_back(milliseconds(Clock::now() - changed));
                return true;
            });
        }
        work.addTo(round, "change", effort.changes);
        std::sort(latencies.begin(), latencies.end());
        round[FleetNames::change] = median(latencies);
        round[FleetNames::slowChange] = latencies[latencies.size() * 99 / 100];
    }

    void measureCommand(Spectator& spectator, const std::string& value) {
        const Work work(fleet, broker);
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
        commands.push_back(milliseconds(Clock::now() - start));
        work.addTo(round, "command and answer", count());
    }

    const std::size_t size;
    const FleetEffort& effort;
    BrokerProcess broker;
    Fleet fleet{size, broker.port()};
    FleetRound round;
    std::vector<double> commands;
    std::mt19937_64 random{size};
};

}  // namespace

FleetRound measureFleet(std::size_t size, const FleetEffort& effort) {
    Measurement measurement(size, effort);
    FleetRound round = measurement.all();
    measurement.connectAgain(round);
    return round;
}

FleetRound measureIdleFleet(const FleetEffort& effort) {
    // The least that libmosquitto takes.
    constexpr int keepalive = 5;
    const BrokerProcess broker;
    Fleet fleet(effort.idleTelevisions, broker.port(), keepalive);
    fleet.connect();
    fleet.waitUntilPublished();
    FleetRound round;
    const Work work(fleet, broker);
    std::this_thread::sleep_for(std::chrono::seconds(effort.idleSeconds));
    work.addTo(round, "keepalive", static_cast<double>(effort.idleTelevisions) * effort.idleSeconds / keepalive);
    return round;
}

}  // namespace Benchmarks
