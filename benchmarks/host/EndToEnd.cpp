#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "host/EndToEndReport.h"

/// How long the running host takes to answer, and how much of a processor, against the floors that it stands on.
namespace {

using namespace Benchmarks;

Round oneRound(const Effort& effort) {
    Round round;
    for (const Listener listener : {Listener::UNIX_SOCKET, Listener::WEB_SOCKET}) {
        for (const Storage storage : {Storage::MEMORY, Storage::DISK}) {
            compareWithEcho(round, storage, listener, effort);
            measureCrowds(round, storage, listener, effort);
        }
        measureWithLog(round, listener, effort);
    }
    measureFullHouse(round, effort);
    return round;
}

Effort quickEffort() {
    Effort effort;
    effort.exchanges = 40;
    effort.exchangesWithDisk = 8;
    effort.exchangesWithCrowd = 10;
    effort.crowds = {1, 16};
    return effort;
}

int measure(int count, const Effort& effort) {
    std::vector<Round> rounds;
    for (int number = 1; number <= count; ++number) {
        std::fprintf(stderr, "round %d of %d\n", number, count);
        rounds.push_back(oneRound(effort));
    }
    report(rounds, effort).print();
    return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    int rounds = 9;
    Effort effort;
    for (int place = 1; place < argumentCount; ++place) {
        const std::string argument = arguments[place];
        if (argument == "--quick") {
            rounds = 1;
            effort = quickEffort();
        } else if (argument == "--rounds" && place + 1 < argumentCount) {
            rounds = std::atoi(arguments[++place]);
        } else {
            std::fprintf(stderr, "usage: benchmark-end-to-end [--rounds N] [--quick]\n");
            return 2;
        }
    }
    stayOnOneProcessor();
    try {
        return measure(rounds, effort);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "benchmark-end-to-end: %s\n", error.what());
        return 1;
    }
}
