// How long a host takes to start, with its sandbox and log, from just before its process is made to its ready line.

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/Arguments.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

namespace {

constexpr double goalMilliseconds = 15;

double startMilliseconds(const TestSupport::TemporaryDirectory& folder, const std::vector<std::string>& web) {
    std::vector<std::string> command{
        SETTINGS_HOST,     "--storage",           folder / "settings.db", "--socket", folder / "settings.sock",
        "--device-socket", folder / "device.sock"};
    command.insert(command.end(), web.begin(), web.end());
    const auto begin = std::chrono::steady_clock::now();
    TestSupport::ChildProcess host(command);
    const auto ready = host.output().readLine();
    const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - begin;
    if (!ready) {
        throw std::runtime_error("the host did not start: " + host.errors().readAll(std::chrono::seconds(1)));
    }
    host.sendSignal(SIGTERM);
    host.wait();
    return passed.count();
}

Results measure(const Arguments& arguments) {
    const TestSupport::TemporaryDirectory folder(std::filesystem::temp_directory_path());
    const std::vector<std::string> withoutWeb{"--no-web"};
    std::vector<std::string> withWeb{"--listen", "127.0.0.1:0"};
    // Read at the start, if they were built.
    if (std::filesystem::exists(SETTINGS_PAGES "/index.html")) {
        withWeb.insert(withWeb.end(), {"--pages", SETTINGS_PAGES});
    }
    startMilliseconds(folder, withoutWeb);  // Makes the database.
    Figure without{"host/start/without web port", "ms", {}};
    Figure with{"host/start/with web port", "ms", {}};
    for (int round = 0; round < arguments.rounds; ++round) {
        for (int start = 0; start < (arguments.quick ? 1 : 3); ++start) {
            without.rounds.push_back(startMilliseconds(folder, withoutWeb));
            with.rounds.push_back(startMilliseconds(folder, withWeb));
        }
    }
    Results results;
    for (const auto& figure : {without, with}) {
        const std::vector<double> goals(figure.rounds.size(), goalMilliseconds);
        results.add(Ratio{figure.name, "15 ms", quotients(figure.rounds, goals), 1.0});
        results.add(figure);
    }
    return results;
}

}  // namespace

}  // namespace Benchmarks

int main(int count, char** texts) {
    return Benchmarks::measureAndPrint(count, texts, Benchmarks::measure);
}
