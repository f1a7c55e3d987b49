#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/Results.h"

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

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> command;
    int rounds = 7;
    for (int number = 1; number < argc; ++number) {
        if (std::string(argv[number]) == "--rounds" && number + 1 < argc) {
            rounds = std::atoi(argv[++number]);
        } else {
            command.emplace_back(argv[number]);
        }
    }
    std::vector<double> runtime;
    std::vector<double> libraries;
    std::vector<double> overBar;
    for (int round = 0; round < rounds; ++round) {
        std::vector<double> runtimeStarts;
        std::vector<double> libraryStarts;
        for (int start = 0; start < startsPerRound; ++start) {
            const auto [runtimeTime, libraryTime] = loaded(command);
            runtimeStarts.push_back(runtimeTime);
            libraryStarts.push_back(libraryTime);
        }
        runtime.push_back(Benchmarks::median(runtimeStarts));
        libraries.push_back(Benchmarks::median(libraryStarts));
        overBar.push_back(libraries.back());
    }
    Benchmarks::Results results;
    results.add(Benchmarks::Figure{"loading/C++ runtime", "ms", runtime});
    results.add(Benchmarks::Figure{"loading/library and platform libraries", "ms", libraries});
    results.add(
        Benchmarks::Ratio{"loading of library and platform libraries, after the C++ runtime", "1 ms", overBar, 1});
    results.print();
    return 0;
}
