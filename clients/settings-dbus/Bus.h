#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Message.h"
#include "bridge/Log.h"
#include "bridge/Loop.h"

namespace SettingsDbus {

class Object;

/// The connection to the bus. It reconnects after a loss.
class Bus {
public:
    Bus(bool isSession, std::vector<Object*> objects, const SettingsBridge::Log& log);

    /// Connects, and takes the name of the service. Errors: `BusError`.
    void connect();
    /// Null while there is no connection.
    sd_bus* connection() const { return bus.get(); }
    SettingsBridge::Source::Wanted wanted() const;
    /// Takes a bounded number of messages, or reconnects when it is time.
    /// Returns: whether the connection is a new one.
    bool process();

private:
    bool reconnect();
    void waitToConnect();

    const bool session;
    const std::vector<Object*> objects;
    const SettingsBridge::Log& log;
    std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)> bus{nullptr, &sd_bus_flush_close_unref};
    SettingsBridge::Source::Time nextAttempt;
    /// Why the last attempt failed.
    std::string loggedReason;
};

}  // namespace SettingsDbus
