#pragma once

#include <stdexcept>
#include <string>

namespace SettingsCtl {

/// Exit statuses; scripts rely on the numbers.
enum ExitStatus : int {
    DONE = 0,
    /// Refused by the handler or the host, no such value, or the result cannot be written.
    REFUSED = 1,
    WRONG_USAGE = 2,
    /// The host cannot be reached, closed the connection, does not reply, or is not a settings-host.
    UNREACHABLE = 3,
};

/// Ends the program with a message on standard error.
class Failure : public std::runtime_error {
public:
    Failure(ExitStatus exitStatus, const std::string& message) : std::runtime_error(message), status(exitStatus) {}

    ExitStatus exitStatus() const { return status; }

private:
    ExitStatus status;
};

}  // namespace SettingsCtl
