#include <cstdio>
#include <vector>

#include "host/EndToEndReport.h"
#include "host/EndToEndResume.h"
#include "support/Arguments.h"

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
    measureResume(round, effort);
    return round;
}

Effort quickEffort() {
    Effort effort;
    effort.exchanges = 40;
    effort.exchangesWithDisk = 8;
    effort.exchangesWithCrowd = 10;
    effort.resumes = 2;
    effort.crowds = {1, 16};
    return effort;
}

Results measure(const Arguments& arguments) {
    const Effort effort = arguments.quick ? quickEffort() : Effort();
    stayOnOneProcessor();
    std::vector<Round> rounds;
    for (int number = 1; number <= arguments.rounds; ++number) {
        std::fprintf(stderr, "round %d of %d\n", number, arguments.rounds);
        rounds.push_back(oneRound(effort));
    }
    return report(rounds, effort);
}

}  // namespace

int main(int count, char** texts) {
    return measureAndPrint(count, texts, measure);
}
