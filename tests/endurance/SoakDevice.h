#pragma once

#include <cstdint>
#include <string>

#include "support/LineClient.h"

namespace Endurance {

/// Sends device commands that change the same settings as the clients.
class SoakDevice {
public:
    explicit SoakDevice(const std::string& socketPath) : connection(socketPath) {}

    /// Sends the commands of `round` at once. Returns: their number.
    std::uint64_t sendCommands(std::uint64_t round);

    /// Errors: `std::runtime_error` for a wrong, missing or late reply.
    void receiveAnswers();

private:
    TestSupport::LineClient connection;
};

}  // namespace Endurance
