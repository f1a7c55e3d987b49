#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <sys/epoll.h>
#include <unistd.h>

#include "fleet/Television.h"

/// Many televisions in one process and one loop. Usage: fleet-televisions FIRST COUNT PORT KEEPALIVE PAUSE (see
/// `TelevisionOptions`). Commands come as lines at descriptor 3: "connect", and "change NUMBER". Lines of the output:
/// "made", and "published TIME" whenever all have connected once more and the broker has taken everything.
namespace {

using Benchmarks::Television;
using Clock = std::chrono::steady_clock;
using Wanted = Mqtt::Connection::Wanted;

constexpr int commands = 3;
constexpr std::size_t commandsIndex = static_cast<std::size_t>(-1);

void check(bool isFine, const char* what) {
    if (!isFine) {
        throw std::runtime_error(what);
    }
}

class Televisions {
public:
    Televisions(std::size_t firstNumber, std::size_t count, const Benchmarks::TelevisionOptions& options);

    /// Until there are no commands any more.
    void run();

private:
    /// One television and what this loop knows of it.
    struct Place {
        std::unique_ptr<Television> television;
        int watched = -1;
        short events = 0;
        Clock::time_point due{};
        int reportedConnections = 0;
        bool hasPublished = false;
    };

    int waitTime() const;
    void serve(std::size_t index, std::uint32_t events);
    void serveDue();
    /// Takes note of what a television wants and has done.
    void update(std::size_t index);
    void watch(std::size_t index, const Wanted& wanted);
    /// Returns: false at their end.
    bool readCommands();
    void execute(const std::string& line);
    void report();

    const std::size_t first;
    const int epoll = ::epoll_create1(EPOLL_CLOEXEC);
    std::vector<Place> places;
    std::set<std::pair<Clock::time_point, std::size_t>> dueTimes;
    std::size_t published = 0;
    std::string pending;
};

Televisions::Televisions(std::size_t firstNumber, std::size_t count, const Benchmarks::TelevisionOptions& options)
    : first(firstNumber), places(count) {
    for (std::size_t index = 0; index < count; ++index) {
        places[index].television = std::make_unique<Television>(first + index, options);
    }
    epoll_event event{EPOLLIN, {}};
    event.data.u64 = commandsIndex;
    check(::epoll_ctl(epoll, EPOLL_CTL_ADD, commands, &event) == 0, "no commands");
}

int Televisions::waitTime() const {
    if (dueTimes.empty()) {
        return -1;
    }
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(dueTimes.begin()->first - Clock::now()).count();
    return static_cast<int>(std::max<std::int64_t>(0, std::min<std::int64_t>(wait, 60000)));
}

void Televisions::run() {
    std::puts("made");
    std::fflush(stdout);
    std::vector<epoll_event> ready(1024);
    for (;;) {
        const int count = ::epoll_wait(epoll, ready.data(), static_cast<int>(ready.size()), waitTime());
        for (int number = 0; number < count; ++number) {
            const auto& event = ready[static_cast<std::size_t>(number)];
            if (event.data.u64 != commandsIndex) {
                serve(event.data.u64, event.events);
            } else if (!readCommands()) {
                return;
            }
        }
        serveDue();
        if (published == places.size()) {
            report();
        }
    }
}

void Televisions::serve(std::size_t index, std::uint32_t events) {
    Place& place = places[index];
    place.television->connection().process(static_cast<short>(events));
    place.television->tellBridge();
    update(index);
}

void Televisions::serveDue() {
    const auto now = Clock::now();
    // Each once: one may be due again at once.
    for (std::size_t turns = dueTimes.size(); turns > 0 && dueTimes.begin()->first <= now; --turns) {
        serve(dueTimes.begin()->second, 0);
    }
}

void Televisions::update(std::size_t index) {
    Place& place = places[index];
    const auto wanted = place.television->connection().wanted();
    watch(index, wanted);
    const auto due = wanted.time.value_or(Clock::time_point::max());
    if (due != place.due) {
        dueTimes.erase({place.due, index});
        dueTimes.emplace(due, index);
        place.due = due;
    }
    const bool hasPublished = place.television->hasPublished(place.reportedConnections);
    published += static_cast<std::size_t>(hasPublished) - static_cast<std::size_t>(place.hasPublished);
    place.hasPublished = hasPublished;
}

void Televisions::watch(std::size_t index, const Wanted& wanted) {
    Place& place = places[index];
    if (wanted.descriptor == place.watched && wanted.events == place.events) {
        return;
    }
    epoll_event event{static_cast<std::uint32_t>(wanted.events), {}};
    event.data.u64 = index;
    // A closed descriptor is watched no more.
    if (wanted.descriptor >= 0) {
        const int operation = wanted.descriptor == place.watched ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
        check(::epoll_ctl(epoll, operation, wanted.descriptor, &event) == 0, "epoll_ctl failed");
    }
    place.watched = wanted.descriptor;
    place.events = wanted.events;
}

bool Televisions::readCommands() {
    char bytes[512];
    const ssize_t count = ::read(commands, bytes, sizeof(bytes));
    if (count <= 0) {
        return false;
    }
    pending.append(bytes, static_cast<std::size_t>(count));
    for (std::size_t end = 0; (end = pending.find('\n')) != std::string::npos;) {
        execute(pending.substr(0, end));
        pending.erase(0, end + 1);
    }
    return true;
}

void Televisions::execute(const std::string& line) {
    if (line == "connect") {
        for (std::size_t index = 0; index < places.size(); ++index) {
            serve(index, 0);
        }
        return;
    }
    const std::size_t index = std::stoul(line.substr(line.find(' '))) - first;
    places.at(index).television->change();
    update(index);
}

void Televisions::report() {
    std::printf("published %lld\n", static_cast<long long>(Clock::now().time_since_epoch().count()));
    std::fflush(stdout);
    for (auto& place : places) {
        place.reportedConnections = place.television->connections();
        place.hasPublished = false;
    }
    published = 0;
}

}  // namespace

int main(int count, char** texts) {
    if (count != 6) {
        return 2;
    }
    try {
        const Benchmarks::TelevisionOptions options{std::stoi(texts[3]), std::stoi(texts[4]),
                                                    std::chrono::milliseconds(std::stol(texts[5]))};
        Televisions(std::stoul(texts[1]), std::stoul(texts[2]), options).run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fleet-televisions: %s\n", error.what());
        return 1;
    }
    return 0;
}
