#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/Arguments.h"
#include "support/ChildProcess.h"

// How long a program waits for the library and the platform libraries: each start is a new process, because a library
// stays in the process that loaded it. Usage: benchmark-loading LOADER LIBRARY… [--rounds N]

namespace {

constexpr int startsPerRound = 21;

struct Milliseconds {
    double runtime;
    double libraries;
};

Milliseconds loaded(const std::vector<std::string>& command) {
    const auto finished = TestSupport::run(command);
    long runtime = 0;
    long libraries = 0;
    if (finished.status != 0 || std::sscanf(finished.output.c_str(), "%ld %ld", &runtime, &libraries) != 2) {
        throw std::runtime_error("cannot load: " + finished.errors);
    }
    return {static_cast<double>(runtime) / 1e6, static_cast<double>(libraries) / 1e6};
}

Benchmarks::Results measure(const Benchmarks::Arguments& arguments) {
    std::vector<double> runtime;
    std::vector<double> libraries;
    for (int round = 0; round < arguments.rounds; ++round) {
        std::vector<double> runtimeStarts;
        std::vector<double> libraryStarts;
        for (int start = 0; start < startsPerRound; ++start) {
            const auto [runtimeTime, libraryTime] = loaded(arguments.others);
            runtimeStarts.push_back(runtimeTime);
            libraryStarts.push_back(libraryTime);
        }
        runtime.push_back(Benchmarks::median(runtimeStarts));
        libraries.push_back(Benchmarks::median(libraryStarts));
    }
    Benchmarks::Results results;
    results.add(Benchmarks::Figure{"loading/C++ runtime", "ms", runtime});
    results.add(Benchmarks::Figure{"loading/library and platform libraries", "ms", libraries});
    // In milliseconds, and so already over 1 ms.
    results.add(
        Benchmarks::Ratio{"loading of library and platform libraries, after the C++ runtime", "1 ms", libraries, 1});
    return results;
}

}  // namespace

int main(int count, char** texts) {
    return Benchmarks::measureAndPrint(count, texts, measure);
}
