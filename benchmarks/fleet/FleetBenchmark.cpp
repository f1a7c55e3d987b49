#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "fleet/FleetRound.h"
#include "support/Arguments.h"
#include "support/Results.h"

/// How a broker with many televisions behaves, and what one of them takes in bridge and broker. An argument is a number
/// of televisions to measure in place of the usual ones.
namespace {

using namespace Benchmarks;

using Rounds = std::map<std::string, std::vector<double>>;

void addTo(Rounds& rounds, const FleetRound& round) {
    for (const auto& [name, value] : round) {
        rounds[name].push_back(value);
    }
}

/// "1,000".
std::string withCommas(std::size_t number) {
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3; place -= 3) {
        text.insert(place - 3, ",");
    }
    return text;
}

void report(Results& results, const std::string& column, const Rounds& rounds) {
    for (const auto& [name, values] : rounds) {
        std::string path = "fleet/";
        path.append(name).append("/").append(column);
        results.add(Figure{path, "", values});
    }
}

struct Curve {
    const char* plot;
    const char* title;
    /// One of `FleetNames`.
    const char* name;
    const char* unit;
};

constexpr Curve curves[] = {
    {"A fleet, times", "all at once", FleetNames::connected, "ms"},
    {"A fleet, times", "broker restarted", FleetNames::connectedAgain, "ms"},
    {"A fleet, times", "group command", FleetNames::command, "ms"},
    {"A fleet, times", "change, 99 %", FleetNames::slowChange, "ms"},
    {"A fleet, times", "change, median", FleetNames::change, "ms"},
    {"A fleet, memory", "one in the bridge", FleetNames::bridgeMemory, "KiB"},
    {"A fleet, memory", "one in the broker", FleetNames::brokerMemory, "KiB"},
};

void addCurve(Results& results, const Curve& wanted, const std::map<std::size_t, Rounds>& sizes) {
    Series curve{wanted.plot, wanted.title, "televisions", wanted.unit, {}};
    for (const auto& [size, rounds] : sizes) {
        if (rounds.count(wanted.name) > 0) {
            curve.points.emplace_back(size, median(rounds.at(wanted.name)));
        }
    }
    results.add(curve);
}

/// A large fleet takes minutes.
int roundsOf(std::size_t size, const Arguments& arguments) {
    return size > 3000 ? 1 : std::min(arguments.rounds, 3);
}

FleetEffort quickEffort() {
    FleetEffort effort;
    effort.sizes = {3, 20};
    effort.changes = 10;
    effort.commands = 1;
    effort.idleTelevisions = 10;
    effort.idleSeconds = 1;
    return effort;
}

Results measure(const Arguments& arguments) {
    FleetEffort effort = arguments.quick ? quickEffort() : FleetEffort();
    if (!arguments.others.empty()) {
        effort.sizes = {std::stoul(arguments.others.front())};
    }
    std::map<std::size_t, Rounds> sizes;
    Rounds idle;
    Rounds program;
    for (const std::size_t size : effort.sizes) {
        for (int number = 1; number <= roundsOf(size, arguments); ++number) {
            std::fprintf(stderr, "%zu televisions, round %d\n", size, number);
            addTo(sizes[size], measureFleet(size, effort));
        }
    }
    addTo(idle, measureIdleFleet(effort));
    addTo(program, measureProgram(effort));
    Results results;
    for (const auto& [size, rounds] : sizes) {
        report(results, withCommas(size), rounds);
    }
    report(results, withCommas(effort.idleTelevisions), idle);
    report(results, "settings-mqtt", program);
    for (const auto& curve : curves) {
        addCurve(results, curve, sizes);
    }
    return results;
}

}  // namespace

int main(int count, char** texts) {
    return measureAndPrint(count, texts, measure);
}
