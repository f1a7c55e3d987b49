#include "Bus.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "Object.h"

namespace SettingsDbus {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds attemptInterval{200};
/// Messages in one turn.
constexpr int maximumMessages = 64;

}  // namespace

Bus::Bus(bool isSession, std::vector<Object*> served, const SettingsBridge::Log& programLog)
    : session(isSession), objects(std::move(served)), log(programLog) {}

void Bus::connect() {
    sd_bus* opened = nullptr;
    check("cannot connect to the bus", session ? sd_bus_open_user(&opened) : sd_bus_open_system(&opened));
    bus.reset(opened);
    for (Object* const object : objects) {
        object->addTo(opened);
    }
    check((std::string("cannot acquire the name ") + serviceName + " on the bus").c_str(),
          sd_bus_request_name(opened, serviceName, 0));
}

SettingsBridge::Source::Wanted Bus::wanted() const {
    if (!bus) {
        return {-1, 0, nextAttempt};
    }
    SettingsBridge::Source::Wanted wanted{sd_bus_get_fd(bus.get()),
                                          static_cast<short>(std::max(sd_bus_get_events(bus.get()), 0)), std::nullopt};
    std::uint64_t time = UINT64_MAX;
    if (sd_bus_get_timeout(bus.get(), &time) >= 0 && time != UINT64_MAX) {
        // The clock of both is CLOCK_MONOTONIC.
        wanted.time = Clock::time_point(std::chrono::microseconds(time));
    }
    return wanted;
}

bool Bus::process() {
    if (!bus) {
        return reconnect();
    }
    int result = 1;
    for (int count = 0; result > 0 && count < maximumMessages; ++count) {
        result = sd_bus_process(bus.get(), nullptr);
    }
    if (result < 0) {
        log.write(SettingsBridge::LogLevel::WARNING,
                  std::string("the connection to the bus was lost: ") + std::strerror(-result));
        waitToConnect();
    }
    return false;
}

bool Bus::reconnect() {
    try {
        connect();
        log.write(SettingsBridge::LogLevel::INFORMATION, "reconnected to the bus");
        loggedReason.clear();
        return true;
    } catch (const BusError& error) {
        if (std::exchange(loggedReason, error.what()) != error.what()) {
            log.write(SettingsBridge::LogLevel::WARNING, std::string("cannot reconnect to the bus: ") + error.what());
        }
        waitToConnect();
        return false;
    }
}

void Bus::waitToConnect() {
    bus.reset();
    nextAttempt = Clock::now() + attemptInterval;
}

}  // namespace SettingsDbus
