#include "simulation/VirtualClock.h"

#include <ctime>

#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace SettingsSimulation {

namespace {

/// 1 January 2024.
constexpr std::chrono::seconds epoch{1'704'067'200};
/// Since the machine was switched on.
constexpr std::chrono::seconds uptime{100};

const VirtualClock*& present() {
    static const VirtualClock* clock = nullptr;
    return clock;
}

timespec specOf(std::chrono::nanoseconds time) {
    constexpr long second = 1'000'000'000;
    return {static_cast<time_t>(time.count() / second), static_cast<long>(time.count() % second)};
}

bool isSteady(clockid_t clock) {
    return clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_COARSE || clock == CLOCK_MONOTONIC_RAW ||
           clock == CLOCK_BOOTTIME;
}

bool isSystem(clockid_t clock) {
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
}

int timeOf(clockid_t clock, timespec* result) {
    if (present() != nullptr && (isSteady(clock) || isSystem(clock))) {
        *result = specOf(present()->sinceStart() + (isSteady(clock) ? uptime : epoch));
        return 0;
    }
    return static_cast<int>(::syscall(SYS_clock_gettime, clock, result));
}

}  // namespace

VirtualClock::VirtualClock() {
    present() = this;
}

VirtualClock::~VirtualClock() {
    present() = nullptr;
}

std::int64_t VirtualClock::now() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(elapsed + epoch).count();
}

double realSeconds() {
    timespec time{};
    ::syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

}  // namespace SettingsSimulation

// The double of the C library's functions, for this program and the shared libraries that it uses.
extern "C" {

int clock_gettime(clockid_t clock, timespec* result) noexcept {
    return SettingsSimulation::timeOf(clock, result);
}

int gettimeofday(timeval* result, void* /*zone*/) noexcept {
    timespec time{};
    const int failure = SettingsSimulation::timeOf(CLOCK_REALTIME, &time);
    *result = {time.tv_sec, static_cast<suseconds_t>(time.tv_nsec / 1000)};
    return failure;
}

time_t time(time_t* result) noexcept {
    timespec now{};
    SettingsSimulation::timeOf(CLOCK_REALTIME, &now);
    if (result != nullptr) {
        *result = now.tv_sec;
    }
    return now.tv_sec;
}
}
