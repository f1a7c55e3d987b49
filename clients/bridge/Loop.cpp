#include "bridge/Loop.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>

#include <poll.h>
#include <sys/signalfd.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

namespace SettingsBridge {

namespace {

using Clock = std::chrono::steady_clock;

/// For poll(2), rounded up so that the time has come when the wait ends.
int millisecondsUntil(const std::optional<Source::Time>& time) {
    if (!time) {
        return -1;
    }
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(*time - Clock::now()).count();
    constexpr std::int64_t longest = 3'600'000;
    return static_cast<int>(std::clamp<std::int64_t>(wait, 0, longest));
}

void earlier(std::optional<Source::Time>& first, const std::optional<Source::Time>& time) {
    if (time && (!first || *time < *first)) {
        first = time;
    }
}

}  // namespace

Loop::Loop() {
    sigset_t ending{};
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    signals = ::signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK);
    if (signals < 0) {
        throw std::system_error(errno, std::generic_category(), "signals cannot be received");
    }
    std::uint64_t timeout = 0;
    if (::sd_watchdog_enabled(0, &timeout) > 0) {
        aliveInterval = std::chrono::microseconds(timeout) / 2;
    }
}

Loop::~Loop() {
    ::close(signals);
}

void Loop::run(const std::string& status) {
    ::sd_notify(0, ("READY=1\nSTATUS=" + status).c_str());
    while (!isStopped) {
        turn();
    }
    ::sd_notify(0, "STOPPING=1");
}

void Loop::turn() {
    std::vector<Source::Wanted> wanted;
    std::vector<pollfd> descriptors{{signals, POLLIN, 0}};
    std::optional<Source::Time> first;
    if (aliveInterval) {
        if (Clock::now() >= nextAlive) {
            ::sd_notify(0, "WATCHDOG=1");
            nextAlive = Clock::now() + *aliveInterval;
        }
        first = nextAlive;
    }
    for (Source* const source : sources) {
        wanted.push_back(source->wanted());
        descriptors.push_back({wanted.back().descriptor, wanted.back().events, 0});
        earlier(first, wanted.back().time);
    }
    ::poll(descriptors.data(), descriptors.size(), millisecondsUntil(first));
    isStopped = isStopped || descriptors.front().revents != 0;
    for (std::size_t number = 0; number < wanted.size() && !isStopped; ++number) {
        const short events = descriptors[number + 1].revents;
        if (events != 0 || (wanted[number].time && Clock::now() >= *wanted[number].time)) {
            sources[number]->process(events);
        }
    }
}

}  // namespace SettingsBridge
