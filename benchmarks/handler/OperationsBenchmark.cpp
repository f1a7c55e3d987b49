#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "Operations.h"
#include "VessaLogger/LogSink.h"
#include "support/Arguments.h"

// Times every operation of the handler. Usage:
// benchmark-operations [--rounds N] and the options of Google Benchmark. The usual report goes to standard error, the
// results to standard output.

namespace {

/// Keeps the processor time of each turn, in microseconds, round by round.
class Collector : public benchmark::ConsoleReporter {
public:
    Collector() : ConsoleReporter(OO_None) {
        SetOutputStream(&std::cerr);
        SetErrorStream(&std::cerr);
    }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                rounds[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    std::map<std::string, std::vector<double>> rounds;
};

void add(const std::string& name, const std::function<void()>& run) {
    benchmark::RegisterBenchmark(name.c_str(), [run](benchmark::State& state) {
        for (auto turn : state) {
            run();
        }
    })->Unit(benchmark::kMicrosecond);
}

/// How the time of one kind of operation grows with the number in its name, such as "observers/100".
void addCurve(Benchmarks::Results& results, const Collector& collector, const std::string& kind,
              const std::vector<int>& numbers) {
    Benchmarks::Series curve{"time of a SetSettings by " + kind, "handler", kind, "us", {}};
    for (const int number : numbers) {
        const auto found = collector.rounds.find(kind + "/" + std::to_string(number));
        if (found != collector.rounds.end()) {
            curve.points.emplace_back(number, Benchmarks::median(found->second));
        }
    }
    results.add(curve);
}

Benchmarks::Results resultsOf(Collector& collector) {
    Benchmarks::Results results;
    for (const auto& [name, rounds] : collector.rounds) {
        results.add(Benchmarks::Figure{"time/" + name, "us", rounds});
    }
    results.add(Benchmarks::Ratio{"time of a SetSettings with 1,000 keys in the cache", "the same with 15",
                                  Benchmarks::quotients(collector.rounds["cache/1000"], collector.rounds["cache/15"]),
                                  1.1});
    addCurve(results, collector, "observers", {0, 1, 10, 100, 1000});
    addCurve(results, collector, "cache", {15, 1000, 100000});
    return results;
}

Benchmarks::Results measure(const Benchmarks::Arguments& arguments) {
    VessaLogger::setLogSink([](const VessaLogger::LogLine&) {});
    std::vector<std::string> options{"benchmark-operations"};
    options.insert(options.end(), arguments.others.begin(), arguments.others.end());
    std::vector<char*> texts;
    for (auto& option : options) {
        texts.push_back(option.data());
    }
    int count = static_cast<int>(texts.size());
    benchmark::Initialize(&count, texts.data());
    if (benchmark::ReportUnrecognizedArguments(count, texts.data())) {
        throw std::invalid_argument("unknown option");
    }
    for (const auto& operation : Benchmarks::operations(100000)) {
        add(operation.name, operation.run);
    }
    Collector collector;
    for (int round = 0; round < arguments.rounds; ++round) {
        benchmark::RunSpecifiedBenchmarks(&collector);
    }
    return resultsOf(collector);
}

}  // namespace

int main(int count, char** texts) {
    return Benchmarks::measureAndPrint(count, texts, measure);
}
