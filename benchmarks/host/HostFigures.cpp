// What a host costs that starts, waits, and stores: time, memory, wake-ups, flushes of the disk.

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include <CLI/CLI.hpp>

#include "HostFiguresHost.h"
#include "support/ProcessUsage.h"
#include "support/Results.h"
#include "support/Texts.h"

namespace Benchmarks {

namespace {

/// The bar of the idle host's resident memory.
constexpr double tenMegabytes = 10e6;
/// The bars of the start and of what 99,000 writes may add to the host's own memory.
constexpr double startBarMilliseconds = 15;
constexpr double growthBar = 256 * 1024;

struct Plan {
    unsigned rounds = 7;
    bool quick = false;

    unsigned startsPerRound() const { return quick ? 1 : 3; }
    /// The first look at the age of the backups is five seconds after the start.
    std::chrono::milliseconds settling() const { return std::chrono::milliseconds(quick ? 300 : 6000); }
    /// A page that says nothing is pinged every 15 seconds: four times.
    std::chrono::milliseconds window() const { return std::chrono::milliseconds(quick ? 500 : 60000); }
    std::size_t writes() const { return quick ? 2000 : 100000; }
    std::size_t writesBefore() const { return quick ? 200 : 1000; }
    std::size_t flushedWrites() const { return quick ? 70 : 400; }
};

/// What keeps a log from filling a pipe that nobody reads.
const Words withoutLog{"sh", "-c", "exec \"$@\" 2>/dev/null", "sh"};

/// Figures by their names, one value more in each round.
class Rounds {
public:
    void add(const std::string& name, const std::string& unit, double value) {
        auto [entry, isNew] = places.emplace(name, figures.size());
        if (isNew) {
            figures.push_back({name, unit, {}});
        }
        figures[entry->second].rounds.push_back(value);
    }

    std::vector<double> of(const std::string& name) const {
        const auto entry = places.find(name);
        return entry == places.end() ? std::vector<double>() : figures[entry->second].rounds;
    }

    void moveTo(Results& results) {
        for (auto& figure : figures) {
            results.add(std::move(figure));
        }
    }

private:
    std::vector<Figure> figures;
    std::map<std::string, std::size_t> places;
};

void measureStarts(const Plan& plan, const HostFolder& folder, Rounds& rounds) {
    for (unsigned start = 0; start < plan.startsPerRound(); ++start) {
        rounds.add("host/start/without web port", "ms", MeasuredHost(folder, false).startMilliseconds());
        rounds.add("host/start/with web port", "ms", MeasuredHost(folder, true).startMilliseconds());
    }
}

struct IdleHost {
    IdleHost(const char* kind, bool withWeb)
        : name(kind), folder(std::filesystem::temp_directory_path()), host(folder, withWeb) {}

    void addMemory(Rounds& rounds) const {
        const auto memory = TestSupport::memoryOf(host.pid());
        const std::string start = "host/idle/" + name + "/";
        rounds.add(start + "resident memory", "bytes", static_cast<double>(memory.resident));
        rounds.add(start + "anonymous memory", "bytes", static_cast<double>(memory.anonymous));
        rounds.add(start + "memory of files", "bytes", static_cast<double>(memory.resident - memory.anonymous));
        rounds.add(start + "proportional memory", "bytes", static_cast<double>(memory.proportional));
        rounds.add(start + "peak memory", "bytes", static_cast<double>(TestSupport::peakMemory(host.pid())));
    }

    std::string name;
    HostFolder folder;
    MeasuredHost host;
};

/// Answers pings for so long, as a browser does. Returns: how many came.
long answerPings(TestSupport::WebSocket& page, std::chrono::milliseconds time) {
    constexpr int ping = 9;
    constexpr int pong = 10;
    page.answerPings = false;
    long pings = 0;
    const auto end = std::chrono::steady_clock::now() + time;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        const auto message = left.count() > 0 ? page.receive(left) : std::nullopt;
        if (!message) {
            return pings;
        }
        if (message->kind == ping) {
            ++pings;
            page.sendFrame(pong, message->payload, true);
        }
    }
}

/// Memory in each round; wake-ups, which take long to count and do not differ, in the first.
void measureIdle(const Plan& plan, bool countWakes, Rounds& rounds) {
    const IdleHost withoutWeb("without web port", false);
    const IdleHost withWeb("with web port", true);
    const IdleHost withPage("with an idle page", true);
    const auto page = withPage.host.page();
    answerPings(*page, plan.settling());
    const auto hosts = {&withoutWeb, &withWeb, &withPage};
    std::vector<long> before;
    for (const auto* idle : hosts) {
        idle->addMemory(rounds);
        before.push_back(TestSupport::voluntarySwitches(idle->host.pid()));
    }
    if (!countWakes) {
        return;
    }
    const double seconds = std::chrono::duration<double>(plan.window()).count();
    const long pings = answerPings(*page, plan.window());
    rounds.add("host/idle/" + withPage.name + "/pings a second", "count", static_cast<double>(pings) / seconds);
    auto first = before.begin();
    for (const auto* idle : hosts) {
        const long wakes = TestSupport::voluntarySwitches(idle->host.pid()) - *first++;
        rounds.add("host/idle/" + idle->name + "/wake-ups a second", "count", static_cast<double>(wakes) / seconds);
    }
}

/// The host's own memory after each share of the writes.
void measureGrowth(const Plan& plan, bool scraped, Rounds& rounds, Series& curve) {
    const HostFolder folder(TestSupport::memoryFolder());
    const MeasuredHost host(folder, scraped, withoutLog);
    Writer writer(folder);
    writer.write(0, plan.writesBefore());
    const auto anonymous = [&] { return static_cast<double>(TestSupport::memoryOf(host.pid()).anonymous); };
    const double before = anonymous();
    curve.points = {{static_cast<double>(plan.writesBefore()), before / 1024}};
    constexpr std::size_t shares = 20;
    std::size_t written = plan.writesBefore();
    for (std::size_t share = 1; share <= shares; ++share) {
        const std::size_t until = std::max(plan.writesBefore(), plan.writes() * share / shares);
        writer.write(written, until);
        written = until;
        if (scraped) {
            host.scrape();
        }
        curve.points.emplace_back(static_cast<double>(written), anonymous() / 1024);
    }
    const std::string start = "host/writes" + std::string(scraped ? " with figures read" : "");
    rounds.add(start + "/anonymous memory before", "bytes", before);
    rounds.add(start + "/growth of anonymous memory", "bytes", anonymous() - before);
    rounds.add(start + "/peak memory", "bytes", static_cast<double>(TestSupport::peakMemory(host.pid())));
}

/// Counts the lines that strace wrote, one for each flush.
double flushesIn(const std::string& traceFile) {
    std::ifstream trace(traceFile);
    double flushes = 0;
    for (std::string line; std::getline(trace, line);) {
        flushes += line.find("sync(") != std::string::npos ? 1 : 0;
    }
    return flushes;
}

bool hasStrace() {
    return TestSupport::run({"sh", "-c", "command -v strace"}).status == 0;
}

/// How often a host whose system calls are watched makes the disk flush for `requests`, each; and that they are, or
/// are not, changes.
void measureFlushes(const Plan& plan, const std::filesystem::path& place, const std::string& name, Rounds& rounds) {
    const HostFolder folder(place);
    const std::string trace = folder.file("trace");
    // The host is the child, not strace, so that signals reach it.
    Words watched{"strace", "-D", "-f", "--seccomp-bpf", "-qq", "-e", "trace=fsync,fdatasync,sync,syncfs", "-o", trace};
    watched.insert(watched.begin(), withoutLog.begin(), withoutLog.end());
    const MeasuredHost host(folder, false, watched);
    Writer writer(folder);
    const auto flushesFor = [&](const std::string& what, const Words& requests, std::size_t expectedEvents) {
        const double before = flushesIn(trace);
        if (writer.send(requests) != expectedEvents) {
            throw std::runtime_error("not as many changes as there should be: " + what);
        }
        rounds.add("host/flushes/" + name + "/" + what, "count",
                   (flushesIn(trace) - before) / static_cast<double>(requests.size()));
    };
    Words accepted;
    Words unchanged;
    Words refused;
    Words stale;
    Words reads;
    for (std::size_t number = 0; number < plan.flushedWrites(); ++number) {
        accepted.push_back(setRequest("deviceName", "value " + std::to_string(number), "2"));
        unchanged.push_back(setRequest("deviceName", "value " + std::to_string(plan.flushedWrites() - 1), "2"));
        refused.push_back(setRequest("captionsEnabled", "value " + std::to_string(number), "2"));
        stale.push_back(setRequest("deviceName", "value " + std::to_string(number), "1"));
        reads.push_back(R"({"type":7,"messageId":"r","payload":{"settings":["deviceName","timezone"]}})"
                        "\n");
    }
    flushesFor("for each accepted write", accepted, accepted.size());
    flushesFor("for each unchanged write", unchanged, 0);
    flushesFor("for each refused write", refused, 0);
    flushesFor("for each stale write", stale, 0);
    flushesFor("for each read", reads, 0);
}

void addOver(Results& results, const Rounds& rounds, const std::string& name, const std::string& over, double bar) {
    const std::vector<double> values = rounds.of(name);
    if (!values.empty()) {
        results.add(Ratio{name, over, quotients(values, std::vector<double>(values.size(), bar)), 1.0});
    }
}

/// Bars that are absolute values: the median over the bar is at most 1. "None" cannot be put so, and is said in words.
void addBars(Results& results, const Rounds& rounds) {
    addOver(results, rounds, "host/start/without web port", "15 ms", startBarMilliseconds);
    addOver(results, rounds, "host/start/with web port", "15 ms", startBarMilliseconds);
    for (const std::string kind : {"without web port", "with web port", "with an idle page"}) {
        addOver(results, rounds, "host/idle/" + kind + "/resident memory", "10 MB", tenMegabytes);
    }
    const std::string tenthOfASecond = "0.1 a second";
    addOver(results, rounds, "host/idle/without web port/wake-ups a second", tenthOfASecond, 0.1);
    addOver(results, rounds, "host/idle/with web port/wake-ups a second", tenthOfASecond, 0.1);
    // Each ping wakes the host twice: to be sent, and with its answer.
    addOver(results, rounds, "host/idle/with an idle page/pings a second", tenthOfASecond, 0.1);
    for (const std::string kind : {"host/writes", "host/writes with figures read"}) {
        addOver(results, rounds, kind + "/growth of anonymous memory", "256 KiB", growthBar);
    }
    for (const std::string place : {"disk", "memory"}) {
        const std::string start = "host/flushes/" + place + "/";
        addOver(results, rounds, start + "for each accepted write", "1.1, checkpoints included", 1.1);
    }
}

void measure(const Plan& plan) {
    Rounds rounds;
    const HostFolder started(std::filesystem::temp_directory_path());
    { const MeasuredHost makesTheDatabase(started, true); }
    Series plain{"anonymous memory of the host", "distinct values", "writes", "KiB", {}};
    Series scraped{"anonymous memory of the host", "distinct values, figures read", "writes", "KiB", {}};
    const bool watched = hasStrace();
    for (unsigned round = 0; round < plan.rounds; ++round) {
        std::fprintf(stderr, "round %u of %u\n", round + 1, plan.rounds);
        measureStarts(plan, started, rounds);
        measureIdle(plan, round == 0, rounds);
        // Takes a tenth of a million writes, and ends within a page of memory or two.
        if (round % 3 == 0) {
            measureGrowth(plan, false, rounds, plain);
            measureGrowth(plan, true, rounds, scraped);
        }
        // Numbers of calls do not differ from round to round.
        if (watched && round == 0) {
            measureFlushes(plan, std::filesystem::temp_directory_path(), "disk", rounds);
            measureFlushes(plan, TestSupport::memoryFolder(), "memory", rounds);
        }
    }
    if (!watched) {
        std::fprintf(stderr, "flushes of the disk were not counted: there is no strace\n");
    }
    Results results;
    addBars(results, rounds);
    rounds.moveTo(results);
    results.add(std::move(plain));
    results.add(std::move(scraped));
    results.print();
}

}  // namespace

}  // namespace Benchmarks

int main(int argumentCount, char** arguments) {
    Benchmarks::Plan plan;
    CLI::App app("Measures what the host costs when it starts, waits and stores. TMPDIR says where its disk is.");
    CLI::Option* const rounds = app.add_option("--rounds", plan.rounds, "How often")->capture_default_str();
    app.add_flag("--quick", plan.quick, "One short round, to show that it works");
    CLI11_PARSE(app, argumentCount, arguments);
    if (plan.quick && rounds->count() == 0) {
        plan.rounds = 1;
    }
    try {
        Benchmarks::measure(plan);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "failed: %s\n", error.what());
        return 1;
    }
}
