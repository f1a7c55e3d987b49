#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace SettingsClient {

/// A setting has a new value.
struct Event {
    /// The setting.
    std::string key;
    /// The value before.
    std::string from;
    /// The value now.
    std::string to;
    /// When, in milliseconds since the epoch, as the host's clock has it.
    std::int64_t timestamp = 0;
    /// The number of the event in this run of the host: 1, 2, 3 …
    std::uint64_t sequence = 0;
    /// Where the change came from: "socket", "page" or "device".
    std::string origin;
    /// The name of the client that asked for the change; empty when none has a name.
    std::string client;
    /// The frame as the host sent it.
    std::string frame;
};

/// Values that may have changed without an event: read them again.
struct Reread {
    /// The settings; empty for all of them. `Client::get` takes it as it is.
    std::vector<std::string> keys;
    /// True: events were missed, since the host was restarted, or forgot them before the client was connected again.
    bool missed = false;
    /// The frame that says so, as the host sent it.
    std::string frame;
};

}  // namespace SettingsClient
