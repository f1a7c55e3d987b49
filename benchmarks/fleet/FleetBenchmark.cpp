#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <mosquitto.h>

#include "fleet/FleetRound.h"
#include "support/Arguments.h"
#include "support/Results.h"

/// How a broker with many televisions behaves, and what one of them takes in bridge and broker.
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
        results.add(Figure{"fleet/" + name + "/" + column, "", values});
    }
}

void addCurve(Results& results, const std::string& plot, const std::string& unit, const char* name,
              const std::map<std::size_t, Rounds>& sizes) {
    Series curve{plot, std::string(name).substr(0, std::string(name).rfind(',')), "televisions", unit, {}};
    for (const auto& [size, rounds] : sizes) {
        curve.points.emplace_back(size, median(rounds.at(name)));
    }
    results.add(curve);
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
    ::mosquitto_lib_init();
    FleetEffort effort = arguments.quick ? quickEffort() : FleetEffort();
    if (!arguments.others.empty()) {
        effort.sizes = {std::stoul(arguments.others[0])};
        effort.idleSeconds = 1;
    }
    std::map<std::size_t, Rounds> sizes;
    Rounds idle;
    Rounds program;
    for (int number = 1; number <= arguments.rounds; ++number) {
        for (const std::size_t size : effort.sizes) {
            std::fprintf(stderr, "round %d of %d, %zu televisions\n", number, arguments.rounds, size);
            addTo(sizes[size], measureFleet(size, effort));
        }
        addTo(idle, measureIdleFleet(effort));
        addTo(program, measureProgram(effort));
    }
    Results results;
    for (const auto& [size, rounds] : sizes) {
        report(results, withCommas(size), rounds);
    }
    report(results, withCommas(effort.idleTelevisions), idle);
    report(results, "settings-mqtt", program);
    for (const char* const name :
         {FleetNames::connectedAgain, FleetNames::command, FleetNames::slowChange, FleetNames::change}) {
        addCurve(results, "A fleet, times", "ms", name, sizes);
    }
    for (const char* const name : {FleetNames::bridgeMemory, FleetNames::brokerMemory}) {
        addCurve(results, "A fleet, memory", "KiB", name, sizes);
    }
    return results;
}

}  // namespace

int main(int count, char** texts) {
    return measureAndPrint(count, texts, measure);
}
