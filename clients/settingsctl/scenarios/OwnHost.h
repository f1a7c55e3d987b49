#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "SettingsClient/SocketCandidates.h"

namespace SettingsCtl {

/// A settings-host of the replay's own, in a temporary folder, both gone with the object.
class OwnHost {
public:
    /// Starts the program next to this one, else that in PATH. `world`: what it starts with, empty for none.
    /// Errors: `Failure`.
    explicit OwnHost(std::string world);
    ~OwnHost();

    OwnHost(const OwnHost&) = delete;
    OwnHost& operator=(const OwnHost&) = delete;

    SettingsClient::SocketOptions sockets() const;

    /// Returns when the host is ready. Errors: `Failure`.
    void start();
    void kill();
    /// Asks it to end.
    void stop() const;
    /// Waits for the end. Returns: how it ended, in words; empty for exit status 0.
    std::string end();

private:
    void becomeHost(const std::vector<std::string>& words, int output) const;
    std::string whatItSaid() const;

    std::filesystem::path folder;
    std::string world;
    pid_t process = -1;
};

}  // namespace SettingsCtl
