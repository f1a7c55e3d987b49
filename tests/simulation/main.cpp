// Runs the host in one process on operations that follow from a seed, and judges all that it does by a model.
// docs/reliability.md says more.

#include <charconv>
#include <fstream>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "VessaLogger/LogSink.h"
#include "simulation/Run.h"
#include "simulation/Shortest.h"

namespace {

using namespace SettingsSimulation;

constexpr const char* usage =
    "Usage: settings_simulation [--seed N | --seeds FROM-TO] [--new-seed] [--operations N]\n"
    "Runs settings-host on simulated clients, disks and clocks, and compares all that it does with a model.\n"
    "  --seed N         the seed of the run (default 1)\n"
    "  --seeds FROM-TO  one run for each of these seeds\n"
    "  --new-seed       and one for a seed that was never used\n"
    "  --operations N   how many in each run (default 2000)\n";

struct Plan {
    std::vector<std::uint64_t> seeds;
    std::size_t operations = 2000;
};

std::uint64_t numberIn(const std::string& text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw std::invalid_argument("'" + text + "' is not a number");
    }
    return number;
}

Plan planOf(const std::vector<std::string>& arguments) {
    Plan plan;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string& option = arguments[index];
        if (option == "--new-seed") {
            plan.seeds.push_back(std::random_device{}());
            continue;
        }
        if (index + 1 == arguments.size()) {
            throw std::invalid_argument("'" + option + "' needs a value, or is not an option");
        }
        const std::string& value = arguments[++index];
        const std::size_t dash = value.find('-');
        if (option == "--seed") {
            plan.seeds.push_back(numberIn(value));
        } else if (option == "--operations") {
            plan.operations = numberIn(value);
        } else if (option == "--seeds" && dash != std::string::npos) {
            const std::uint64_t last = numberIn(value.substr(dash + 1));
            for (std::uint64_t seed = numberIn(value.substr(0, dash)); seed <= last; ++seed) {
                plan.seeds.push_back(seed);
            }
        } else {
            throw std::invalid_argument("'" + option + "' is not an option");
        }
    }
    if (plan.seeds.empty()) {
        plan.seeds.push_back(1);
    }
    return plan;
}

/// Returns: whether the host did all right.
bool simulate(std::uint64_t seed, std::size_t count) {
    constexpr int runs = 3000;
    std::vector<Operation> operations = operationsOf(seed, count);
    Run run(seed, false);
    const auto found = run.play(operations);
    if (!found) {
        return true;
    }
    std::cout << "seed " << seed << ", operation " << run.done() << ": " << found->what()
              << "\nexpected: " << found->expected << "\ncame:     " << found->came << std::endl;
    operations.resize(run.done());
    const auto few = shortest(seed, operations, found->what(), runs);
    const std::string file = "simulation-" + std::to_string(seed) + ".jsonl";
    std::ofstream(file) << scenarioOf(seed, few, operations);
    std::cout << "shortest scenario: " << few.size() << " operations, " << file << '\n';
    for (const auto& operation : few) {
        std::cout << "  " << describe(operation) << '\n';
    }
    std::cout << std::flush;
    return false;
}

int run(const Plan& plan) {
    bool isRight = true;
    for (const std::uint64_t seed : plan.seeds) {
        isRight = simulate(seed, plan.operations) && isRight;
    }
    std::cout << plan.seeds.size() << " seeds with " << plan.operations << " operations each, the last one "
              << plan.seeds.back() << (isRight ? ": nothing found" : "") << std::endl;
    return isRight ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
    try {
        return run(planOf(std::vector<std::string>(arguments + 1, arguments + count)));
    } catch (const std::invalid_argument& error) {
        std::cerr << error.what() << '\n' << usage;
        return 2;
    }
}
