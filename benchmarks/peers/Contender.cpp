#include "Contender.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <utility>

#include "support/Results.h"

namespace Benchmarks {

namespace {

using Clock = std::chrono::steady_clock;

/// What goes from the observing process to the setting one.
struct Sight {
    Clock::time_point time;
    std::array<char, 32> value;
};

void sendSight(int socket, Clock::time_point time, const std::string& value) {
    Sight sight{time, {}};
    std::memcpy(sight.value.data(), value.data(), std::min(value.size(), sight.value.size() - 1));
    sendMessage(socket, &sight, sizeof(sight));
}

/// The process that changes the setting; it starts the one that observes.
class SettingProcess {
public:
    explicit SettingProcess(const Peer& peer) {
        if (peer.tellsOthers()) {
            observer.emplace([&peer](int socket) { peer.observe(Report(socket)); });
            awaitSight("");
        }
        setter = peer.connect();
    }

    /// Makes as many changes as asked for, for ever.
    void serve(int socket) {
        for (;;) {
            int count = 0;
            receiveMessage(socket, &count, sizeof(count));
            std::vector<double> latencies(static_cast<std::size_t>(count));
            for (double& latency : latencies) {
                latency = change();
            }
            sendMessage(socket, latencies.data(), latencies.size() * sizeof(double));
        }
    }

private:
    double change() {
        const std::string value = "Living room " + std::to_string(++number);
        const auto start = Clock::now();
        setter->set(value);
        const auto end = observer ? awaitSight(value) : Clock::now();
        setter->settle();
        return std::chrono::duration<double, std::micro>(end - start).count();
    }

    Clock::time_point awaitSight(const std::string& value) const {
        Sight sight{};
        receiveMessage(observer->descriptor(), &sight, sizeof(sight));
        if (value != sight.value.data()) {
            throw std::runtime_error("'" + value + "' was set, '" + sight.value.data() + "' seen");
        }
        return sight.time;
    }

    std::optional<Worker> observer;
    std::unique_ptr<Setter> setter;
    int number = 0;
};

}  // namespace

void Report::ready() const {
    sendSight(socket, Clock::now(), "");
}

void Report::seen(Clock::time_point time, const std::string& value) const {
    sendSight(socket, time, value);
}

Contender::Contender(std::string label, std::unique_ptr<Peer> chosen, int changes)
    : title(std::move(label)),
      peer(std::move(chosen)),
      changesPerTurn(changes),
      setting([this](int socket) { SettingProcess(*peer).serve(socket); }) {}

void Contender::takeTurn() {
    constexpr int warmUp = 5;
    change(warmUp);
    const std::vector<double> latencies = change(changesPerTurn);
    ofThisRound.insert(ofThisRound.end(), latencies.begin(), latencies.end());
}

void Contender::endRound() {
    roundMedians.push_back(median(ofThisRound));
    all.insert(all.end(), ofThisRound.begin(), ofThisRound.end());
    ofThisRound.clear();
}

std::vector<double> Contender::change(int count) {
    sendMessage(setting.descriptor(), &count, sizeof(count));
    std::vector<double> latencies(static_cast<std::size_t>(count));
    receiveMessage(setting.descriptor(), latencies.data(), latencies.size() * sizeof(double));
    return latencies;
}

}  // namespace Benchmarks
