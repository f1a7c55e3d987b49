#include <benchmark/benchmark.h>

#include "Operations.h"
#include "VessaLogger/LogSink.h"

// Times every operation of the handler and, among them in random order, what each must cost at least.

namespace {

void add(const std::string& name, const std::function<void()>& run) {
    benchmark::RegisterBenchmark(name.c_str(), [run](benchmark::State& state) {
        for (auto turn : state) {
            run();
        }
    });
}

}  // namespace

int main(int argc, char** argv) {
    VessaLogger::setLogSink([](const VessaLogger::LogLine&) {});
    for (const auto& operation : Benchmarks::operations(100000)) {
        add("handler/" + operation.name, operation.handler);
        add("floor/" + operation.name, operation.floor);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
