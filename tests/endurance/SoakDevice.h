#pragma once

#include <cstdint>
#include <string>

#include "support/LineClient.h"

namespace Endurance {

/// The person at the simulated television: changes at the device socket what clients change at theirs.
class SoakDevice {
public:
    explicit SoakDevice(const std::string& socketPath) : connection(socketPath) {}

    /// Sends the commands of `round`, all at once. Returns: how many.
    std::uint64_t sendCommands(std::uint64_t round);

    /// Errors: throws `std::runtime_error` on a wrong, missing or late answer.
    void receiveAnswers();

private:
    TestSupport::LineClient connection;
};

}  // namespace Endurance
