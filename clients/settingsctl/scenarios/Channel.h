#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "SettingsClient/SocketCandidates.h"

namespace SettingsCtl {

/// A connection of a replay: sends and receives texts as they are.
class Channel {
public:
    Channel() = default;
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;
    virtual ~Channel() = default;

    /// Readable when something has come, or the host has closed the connection.
    virtual int descriptor() const = 0;
    /// Is lost when the host has closed the connection.
    virtual void send(const std::string& text) = 0;
    /// Reads what has come. Returns: false when the host has closed the connection.
    virtual bool read() = 0;
    /// The next text that was read.
    virtual std::optional<std::string> take() = 0;
};

/// A connection to a Unix socket. Errors: `SettingsClient::ConnectionError`.
std::unique_ptr<Channel> lineChannel(const std::vector<SettingsClient::SocketCandidate>& candidates,
                                     std::chrono::milliseconds timeout);

/// A WebSocket as a settings page has one. `address`: that of the pages, with its key. Errors: `Failure`.
std::unique_ptr<Channel> pageChannel(const std::string& address, std::chrono::milliseconds timeout);

}  // namespace SettingsCtl
