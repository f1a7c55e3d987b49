// What a batch costs beside single changes on a disk whose flush takes 5 ms, from the request at the socket until the
// last answer.

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/Server.h"
#include "SettingsHandlerKit/Storage.h"
#include "VessaLogger/LogSink.h"
#include "kit/support/FaultyDisk.h"
#include "simulation/SimulatedAppLaunch.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/SimulatedSdkBridge.h"
#include "support/Arguments.h"
#include "support/LineClient.h"
#include "support/TemporaryDirectory.h"

namespace Benchmarks {

namespace {

using namespace SettingsHandlerKit;

constexpr int changesOfBatch = 15;

/// A service on its own thread.
class Service {
public:
    Service() {
        VessaLogger::setLogSink([](const VessaLogger::LogLine&) {});
        disk->onFlush([] { std::this_thread::sleep_for(std::chrono::milliseconds(5)); });
        const auto device = std::make_shared<SettingsHost::SimulatedDevice>(*state, server.valueObserver());
        handler = server.createHandler(
            storage,
            std::make_shared<SettingsHost::SimulatedSdkBridge>(*state, storage, device, server.valueObserver()),
            std::make_shared<SettingsHost::SimulatedAppLaunch>(), device);
        server.start();
        server.startThread();
        client = std::make_unique<TestSupport::LineClient>(server.socketPath());
    }

    /// Changes other values than the last time.
    double milliseconds(int changes, bool asBatch) {
        ++number;
        std::string frames = asBatch ? R"({"batch":[)" : "";
        for (int change = 0; change < changes; ++change) {
            frames += change == 0 ? "" : asBatch ? "," : "\n";
            frames += R"({"type":24,"messageId":"m","answer":true,"timestamp":1,"payload":{"settingDBId":"key)" +
                      std::to_string(change) + R"(","to":")" + std::to_string(number) + "\"}}";
        }
        frames += asBatch ? "]}" : "";
        const auto begin = std::chrono::steady_clock::now();
        client->sendLine(frames);
        for (int answers = 0; answers < changes;) {
            const auto line = client->receiveLine();
            if (!line) {
                throw std::runtime_error("no answer");
            }
            answers += line->find(R"("outcome":"changed")") == std::string::npos ? 0 : 1;
        }
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
    }

private:
    ServerOptions options() const {
        ServerOptions chosen;
        chosen.socketPath = folder / "settings.sock";
        chosen.listen.reset();
        return chosen;
    }

    TestSupport::TemporaryDirectory folder{TestSupport::memoryFolder()};
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    Storage storage{folder / "settings.db", disk};
    std::unique_ptr<StateStore> state = storage.state("simulation");
    std::shared_ptr<CheckedSettingsHandler> handler;
    /// Its thread ends first.
    Server server{options()};
    std::unique_ptr<TestSupport::LineClient> client;
    int number = 0;
};

Results measure(const Arguments& arguments) {
    Service service;
    const int repetitions = arguments.quick ? 1 : 10;
    const auto medianOf = [&](int changes, bool asBatch) {
        std::vector<double> times;
        times.reserve(static_cast<std::size_t>(repetitions));
        for (int repetition = 0; repetition < repetitions; ++repetition) {
            times.push_back(service.milliseconds(changes, asBatch));
        }
        return median(times);
    };
    service.milliseconds(changesOfBatch, true);
    Figure one{"host/batch/one change", "ms", {}};
    Figure batch{"host/batch/15 changes in a batch", "ms", {}};
    Figure single{"host/batch/15 single changes", "ms", {}};
    for (int round = 0; round < arguments.rounds; ++round) {
        one.rounds.push_back(medianOf(1, false));
        batch.rounds.push_back(medianOf(changesOfBatch, true));
        single.rounds.push_back(medianOf(changesOfBatch, false));
    }
    Results results;
    results.add(Ratio{batch.name, "one change", quotients(batch.rounds, one.rounds), 1.5});
    results.add(Ratio{batch.name, "15 single changes", quotients(batch.rounds, single.rounds), 0.1});
    for (const auto& figure : {one, batch, single}) {
        results.add(figure);
    }
    return results;
}

}  // namespace

}  // namespace Benchmarks

int main(int count, char** texts) {
    return Benchmarks::measureAndPrint(count, texts, Benchmarks::measure);
}
