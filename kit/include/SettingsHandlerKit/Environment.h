#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace SettingsHandlerKit {

/// Random bytes from the kernel. Errors: `std::system_error`.
std::string randomBytes(std::size_t count);

/// What a server asks the system for, so that tests can replace it. Both are called on the server's thread.
struct Environment {
    /// The time in time stamps of events and of cookies.
    std::function<std::chrono::system_clock::time_point()> now = std::chrono::system_clock::now;
    /// As many random bytes as it is asked for: the name of the run, keys of the pages and secrets that sign cookies.
    std::function<std::string(std::size_t)> random = randomBytes;
};

}  // namespace SettingsHandlerKit
