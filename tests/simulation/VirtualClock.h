#pragma once

#include <chrono>
#include <cstdint>

namespace SettingsSimulation {

/// While one exists, it is the time of the whole process: system and steady clock, the event loop's timers, SQLite's
/// and the library's. A program that links it has this double of the system's clock instead of the C library's. One
/// object at a time.
class VirtualClock {
public:
    VirtualClock();
    ~VirtualClock();
    VirtualClock(const VirtualClock&) = delete;
    VirtualClock& operator=(const VirtualClock&) = delete;

    void advance(std::chrono::nanoseconds time) { elapsed += time; }
    std::chrono::nanoseconds sinceStart() const { return elapsed; }
    /// In milliseconds since 1970.
    std::int64_t now() const;

private:
    std::chrono::nanoseconds elapsed{0};
};

/// The real steady clock, in seconds, also while a virtual one exists.
double realSeconds();

}  // namespace SettingsSimulation
