#pragma once

#include <chrono>
#include <vector>

#include "Message.h"
#include "bridge/Log.h"
#include "bridge/Loop.h"

namespace SettingsDbus {

class Object;

/// The connection to the bus, which is made again when it was lost.
class Bus {
public:
    Bus(bool isSession, std::vector<Object*> objects, const SettingsBridge::Log& log);

    /// Connects, and takes the name of the service. Errors: `BusError`.
    void connect();
    /// Null while there is no connection.
    sd_bus* connection() const { return bus.get(); }
    SettingsBridge::Source::Wanted wanted() const;
    /// Takes a bounded number of messages, or connects again when it is time.
    /// Returns: whether the connection is a new one.
    bool process();

private:
    bool connectAgain();
    void waitToConnect();

    const bool session;
    const std::vector<Object*> objects;
    const SettingsBridge::Log& log;
    std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)> bus{nullptr, &sd_bus_flush_close_unref};
    SettingsBridge::Source::Time nextAttempt;
};

}  // namespace SettingsDbus
