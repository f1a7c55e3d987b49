#include "host/EndToEndReport.h"

#include <utility>

#include "host/EndToEndResume.h"

namespace Benchmarks {

namespace {

/// One figure of each round.
template <typename Take>
std::vector<double> each(const std::vector<Round>& rounds, const std::string& name, Take take) {
    std::vector<double> values;
    values.reserve(rounds.size());
    for (const auto& round : rounds) {
        values.push_back(take(round.at(name)));
    }
    return values;
}

double medianLatency(const Seen& seen) {
    return median(seen.latencies);
}

double processorTime(const Seen& seen) {
    return seen.processorTimeOfOne();
}

/// "host/unix/memory/set until event" is drawn as "host, unix, memory" in the plot "set until event".
std::pair<std::string, std::string> plotAndName(const std::string& name) {
    std::string curve = name;
    std::string plot = "set until event";
    for (const char* kind : {"/set until event", "/get all until reply"}) {
        const std::size_t place = curve.find(kind);
        if (place != std::string::npos) {
            plot = kind + 1;
            curve.erase(place, plot.size() + 1);
        }
    }
    for (std::size_t slash = curve.find('/'); slash != std::string::npos; slash = curve.find('/')) {
        curve.replace(slash, 1, ", ");
    }
    return {plot, curve};
}

void addDistribution(Results& results, const std::vector<Round>& rounds, const std::string& name) {
    std::vector<double> all;
    for (const auto& round : rounds) {
        const auto& latencies = round.at(name).latencies;
        all.insert(all.end(), latencies.begin(), latencies.end());
    }
    const auto [plot, curve] = plotAndName(name);
    results.add(Distribution(plot, curve, std::move(all)));
}

std::string crowdName(const std::string& kind, std::size_t clients) {
    return kind + "/" + std::to_string(clients) + (clients == 1 ? " client" : " clients");
}

/// What each client more costs, in each round.
std::vector<double> costOfOneMore(const std::vector<Round>& rounds, const std::string& kind, const Effort& effort) {
    const std::size_t few = effort.crowds.front();
    const std::size_t many = effort.crowds.back();
    const auto ofFew = each(rounds, crowdName(kind, few), processorTime);
    auto costs = each(rounds, crowdName(kind, many), processorTime);
    for (std::size_t round = 0; round < costs.size(); ++round) {
        costs[round] = (costs[round] - ofFew[round]) / static_cast<double>(many - few);
    }
    return costs;
}

void addCurves(Results& results, const std::vector<Round>& rounds, const std::string& kind, const std::string& curve,
               const Effort& effort) {
    Series work{"processor time of one event", curve, "clients", "us", {}};
    Series waiting{"set until event by clients", curve, "clients", "us", {}};
    for (const std::size_t clients : effort.crowds) {
        const std::string name = crowdName(kind, clients);
        work.points.emplace_back(clients, median(each(rounds, name, processorTime)));
        waiting.points.emplace_back(clients, median(each(rounds, name, medianLatency)));
    }
    results.add(work);
    results.add(waiting);
}

void addCrowds(Results& results, const std::vector<Round>& rounds, const Effort& effort) {
    for (const Listener listener : {Listener::UNIX_SOCKET, Listener::WEB_SOCKET}) {
        const std::string way = nameOf(listener);
        const std::string memory = "host/" + way + "/memory/set until event";
        const std::string floor = "bare send/" + way;
        addCurves(results, rounds, memory, "host, " + way + ", memory", effort);
        addCurves(results, rounds, "host/" + way + "/disk/set until event", "host, " + way + ", disk", effort);
        addCurves(results, rounds, floor, "bare send, " + way, effort);
        const auto ofHost = costOfOneMore(rounds, memory, effort);
        const auto ofFloor = costOfOneMore(rounds, floor, effort);
        results.add(Figure{"host/" + way + "/processor time of an event for one client more", "us", ofHost});
        results.add(Figure{floor + "/processor time of a frame for one client more", "us", ofFloor});
        // Only the socket's was promised: at the other listener a message has its own header.
        results.add(Ratio{"host/" + way + "/processor time of an event for one client more",
                          listener == Listener::UNIX_SOCKET ? "one bare send of the same frame to one socket"
                                                            : "one bare send of the same frame to one TCP connection",
                          quotients(ofHost, ofFloor), listener == Listener::UNIX_SOCKET ? 1.5 : 0});
    }
}

void addEchoRatios(Results& results, const std::vector<Round>& rounds) {
    // Measured with the log that a shipped host writes; all others with errors only, because the echo has no log.
    results.add(Ratio{"host with log/unix/memory/set until event", "echo through Boost.Beast with one upsert of SQLite",
                      quotients(each(rounds, "host with log/unix/memory/set until event", medianLatency),
                                each(rounds, "echo and upsert/unix/memory", medianLatency)),
                      0});
    for (const Listener listener : {Listener::UNIX_SOCKET, Listener::WEB_SOCKET}) {
        for (const Storage storage : {Storage::MEMORY, Storage::DISK}) {
            const std::string kind = std::string("/") + nameOf(listener) + "/" + nameOf(storage);
            const std::string host = "host" + kind + "/set until event";
            const std::string echo = "echo and upsert" + kind;
            const bool promised = listener == Listener::UNIX_SOCKET && storage == Storage::MEMORY;
            results.add(Ratio{host, "echo through Boost.Beast with one upsert of SQLite",
                              quotients(each(rounds, host, medianLatency), each(rounds, echo, medianLatency)),
                              promised ? 1.5 : 0});
            results.add(Ratio{host + ", processor time", "echo through Boost.Beast with one upsert of SQLite",
                              quotients(each(rounds, host, processorTime), each(rounds, echo, processorTime)), 0});
        }
    }
}

void addResumeRatio(Results& results, const std::vector<Round>& rounds) {
    auto readAnew = each(rounds, "host/unix/memory/get all until reply", processorTime);
    for (double& time : readAnew) {
        time *= missedEvents;
    }
    results.add(Ratio{std::string(resumeName) + ", processor time",
                      "GetSettings of everything, once for each of these events",
                      quotients(each(rounds, resumeName, processorTime), readAnew), 0.05});
}

}  // namespace

Results report(const std::vector<Round>& rounds, const Effort& effort) {
    Results results;
    addEchoRatios(results, rounds);
    addCrowds(results, rounds, effort);
    addResumeRatio(results, rounds);
    for (const auto& [name, seen] : rounds.front()) {
        results.add(Figure{name, "us", each(rounds, name, medianLatency)});
        results.add(Figure{name + ", processor time", "us", each(rounds, name, processorTime)});
        if (name.find("client") == std::string::npos) {
            addDistribution(results, rounds, name);
        }
    }
    return results;
}

}  // namespace Benchmarks
