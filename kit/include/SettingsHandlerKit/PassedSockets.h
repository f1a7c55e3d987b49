#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "SettingsHandlerKit/Descriptor.h"

namespace SettingsHandlerKit {

/// The listening sockets that a service manager opened and passed to this process, or an earlier server of the process
/// (`Server::handOver`), by their names.
class PassedSockets {
public:
    /// None.
    PassedSockets() = default;
    /// Takes the passed sockets; to be called before anything else is opened. Without a service manager there are none.
    /// Errors: `ListenerError` when a socket's name is not in `expected`, two have the same name, one is not open, or
    /// names and number do not match.
    explicit PassedSockets(const std::set<std::string>& expected);

    /// Adds one. `isOwn`: an earlier server made its file, so the one that takes it removes the file at its end.
    void add(const std::string& name, Descriptor socket, bool isOwn);
    /// Is the file of that socket the server's to remove?
    bool isOwn(const std::string& name) const { return own.count(name) > 0; }
    /// Are there none (any more)?
    bool isEmpty() const { return sockets.empty(); }
    /// The socket of that name, once.
    std::optional<Descriptor> take(const std::string& name);

private:
    std::map<std::string, Descriptor> sockets;
    std::set<std::string> own;
};

}  // namespace SettingsHandlerKit
