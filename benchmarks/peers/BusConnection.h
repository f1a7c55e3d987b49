#pragma once

#include <memory>
#include <string>

#include <systemd/sd-bus.h>

#include "Peer.h"

namespace Benchmarks {

using Bus = std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)>;

/// Where a property is.
struct PropertyPlace {
    const char* service;
    const char* object;
    const char* interface;
    const char* name;
};

/// Connects to a message bus. Throws when that fails.
Bus connectToBus(const std::string& address);

/// Throws `std::runtime_error` with `what` when `result` is an error of sd-bus.
void check(int result, const char* what);

/// Sets a text property with `Properties.Set`.
std::unique_ptr<Setter> propertySetter(const std::string& address, const PropertyPlace& place);

/// Reports each change of a text property that its service tells, for ever.
void observeProperty(const std::string& address, const PropertyPlace& place, const Report& report);

}  // namespace Benchmarks
