#pragma once

#include <map>
#include <string>

#include "Message.h"

namespace SettingsDbus {

/// The names under which the host knows callers: unique name and, where the bus gives it, program: ":1.42 busctl".
class Callers {
public:
    /// The caller of `call`.
    const std::string& nameOf(sd_bus_message* call);
    /// The names belong to one life of the bus.
    void clear() { names.clear(); }

private:
    /// By unique name.
    std::map<std::string, std::string> names;
};

}  // namespace SettingsDbus
