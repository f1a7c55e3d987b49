#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>

#include "MemoryCurve.h"
#include "SoakClient.h"
#include "SoakDevice.h"
#include "support/ChildProcess.h"
#include "support/ProcessUsage.h"
#include "support/TemporaryDirectory.h"

namespace Endurance {

namespace {

struct Plan {
    std::uint64_t requests = 100000;
    double minutes = 10;
    std::size_t growthKibibytes = 256;
    std::vector<std::string> host;
};

constexpr int clientCount = 4;
constexpr std::uint64_t sampleCount = 20;
/// In rounds; a round is one batch of each client and the device commands.
constexpr std::uint64_t reconnectEvery = 20;
constexpr std::uint64_t logOutEvery = 2000;
constexpr std::uint64_t firstLogOut = 20;

/// Reads the host's log, so that the pipe never fills, and counts the lines.
class LogReader {
public:
    explicit LogReader(TestSupport::LineReader& errors)
        : thread([this, &errors] {
              while (!errors.atEnd()) {
                  if (const auto line = errors.readLine(std::chrono::seconds(1))) {
                      ++count;
                      last = *line;
                  }
              }
          }) {}
    ~LogReader() { finish(); }
    LogReader(const LogReader&) = delete;
    LogReader& operator=(const LogReader&) = delete;

    /// Waits until the host closes its log.
    void finish() {
        if (thread.joinable()) {
            thread.join();
        }
    }
    /// After `finish`.
    std::uint64_t lines() const { return count; }
    const std::string& lastLine() const { return last; }

private:
    std::uint64_t count = 0;
    std::string last;
    std::thread thread;
};

class Soak {
public:
    explicit Soak(const Plan& chosen) : plan(chosen) {}

    /// Returns: true when the run passed.
    bool run();

private:
    void start();
    void sendAll();
    void sendRound();
    void comeAndGo();
    void sample();
    bool judge() const;
    double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - startTime).count();
    }

    const Plan& plan;
    TestSupport::TemporaryDirectory folder;
    std::unique_ptr<TestSupport::ChildProcess> host;
    std::vector<SoakClient> clients;
    std::unique_ptr<SoakDevice> device;
    std::uint64_t round = 0;
    std::uint64_t sent = 0;
    std::chrono::steady_clock::time_point startTime;
    MemoryCurve curve;
};

void Soak::start() {
    const std::string socket = folder / "settings.sock";
    const std::string deviceSocket = folder / "device.sock";
    std::vector<std::string> command = plan.host;
    for (const std::string& argument :
         std::vector<std::string>{"--storage", folder / "settings.db", "--socket", socket, "--device-socket",
                                  deviceSocket, "--no-web", "--log-level", "3"}) {
        command.push_back(argument);
    }
    host = std::make_unique<TestSupport::ChildProcess>(command);
    if (!host->output().readLine(std::chrono::minutes(1))) {
        throw std::runtime_error("the host did not start: " + host->errors().readAll(std::chrono::seconds(1)));
    }
    for (int number = 0; number < clientCount; ++number) {
        clients.emplace_back(socket, number);
    }
    device = std::make_unique<SoakDevice>(deviceSocket);
}

/// Called between rounds, when no batch is in progress.
void Soak::comeAndGo() {
    if (round % reconnectEvery == 0) {
        clients[round / reconnectEvery % clients.size()].reconnect();
    }
    if (round == firstLogOut || round % logOutEvery == logOutEvery - 1) {
        sent += clients[0].logOut();
    }
}

void Soak::sendRound() {
    comeAndGo();
    for (auto& client : clients) {
        sent += client.sendBatch(round);
    }
    sent += device->sendCommands(round);
    for (auto& client : clients) {
        client.receiveAnswers();
    }
    device->receiveAnswers();
    ++round;
}

void Soak::sample() {
    curve.add(
        {sent, seconds(), TestSupport::residentMemory(host->pid()) / 1024, TestSupport::openDescriptors(host->pid())});
    const Sample& taken = curve.all().back();
    std::printf("%9llu requests %7.1f s %7zu KiB %3zu descriptors\n", static_cast<unsigned long long>(taken.requests),
                taken.seconds, taken.residentKibibytes, taken.descriptors);
    std::fflush(stdout);
}

void Soak::sendAll() {
    startTime = std::chrono::steady_clock::now();
    sample();
    std::uint64_t nextSample = plan.requests / sampleCount;
    while (sent < plan.requests) {
        if (seconds() > plan.minutes * 60) {
            throw std::runtime_error("timeout");
        }
        sendRound();
        if (sent >= nextSample) {
            sample();
            nextSample += plan.requests / sampleCount;
        }
    }
}

bool Soak::judge() const {
    const std::size_t growth = curve.growth();
    const bool steady = growth <= plan.growthKibibytes && curve.descriptorsAreSteady();
    std::printf(
        "%llu requests, %.0f a second; %llu events at each of %d clients; after the warm-up memory grew by %zu "
        "KiB, allowed are %zu: %s\n",
        static_cast<unsigned long long>(sent), static_cast<double>(sent) / curve.all().back().seconds,
        static_cast<unsigned long long>(clients.back().events()), clientCount, growth, plan.growthKibibytes,
        steady ? "steady" : "NOT STEADY");
    return steady;
}

bool Soak::run() {
    start();
    LogReader log(host->errors());
    bool passed = false;
    try {
        sendAll();
        passed = judge();
    } catch (const std::exception& error) {
        std::printf("failed: %s\n", error.what());
    }
    clients.clear();
    device.reset();
    // After a failure the host may still run.
    auto status = passed ? std::nullopt : host->wait(std::chrono::seconds(2));
    if (status) {
        std::printf("the host ended before it was stopped\n");
    } else {
        host->sendSignal(SIGTERM);
        status = host->wait(std::chrono::minutes(1));
    }
    if (!status) {
        host->sendSignal(SIGKILL);
    }
    log.finish();
    std::printf("the host ended with status %d after %llu lines of log; the last: %s\n", status.value_or(-1),
                static_cast<unsigned long long>(log.lines()), log.lastLine().c_str());
    return passed && status == 0;
}

}  // namespace

}  // namespace Endurance

int main(int argumentCount, char** arguments) {
    Endurance::Plan plan;
    CLI::App app("Sends requests to a host and measures its memory. Its database and sockets are in TMPDIR.");
    app.option_defaults()->always_capture_default();
    app.add_option("--requests", plan.requests, "Number of requests");
    app.add_option("--minutes", plan.minutes, "Timeout in minutes");
    app.add_option("--growth", plan.growthKibibytes, "Allowed growth of memory after the warm-up, in KiB");
    app.add_option("host", plan.host, "Command that starts the host")->required();
    CLI11_PARSE(app, argumentCount, arguments);
    try {
        return Endurance::Soak(plan).run() ? 0 : 1;
    } catch (const std::exception& error) {
        std::printf("failed: %s\n", error.what());
        return 1;
    }
}
