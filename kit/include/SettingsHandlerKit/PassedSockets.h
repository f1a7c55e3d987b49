#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "SettingsHandlerKit/Descriptor.h"

namespace SettingsHandlerKit {

/// The listening sockets that a service manager opened and passed to this process, by their names.
class PassedSockets {
public:
    /// None.
    PassedSockets() = default;
    /// Takes the passed sockets; to be called before anything else is opened. Without a service manager there are none.
    /// Errors: `ListenerError` when a socket's name is not in `expected`, two have the same name, one is not open, or
    /// names and number do not match.
    explicit PassedSockets(const std::set<std::string>& expected);

    /// The socket of that name, once.
    std::optional<Descriptor> take(const std::string& name);

private:
    std::map<std::string, Descriptor> sockets;
};

}  // namespace SettingsHandlerKit
