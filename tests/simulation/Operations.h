#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulation/SimulatedHost.h"

namespace SettingsSimulation {

/// What a client, the device or the world does. Each operation can be done in any state: the host is started and the
/// client connects first where that is needed.
struct Operation {
    enum class Type {
        /// `text` is a frame.
        SEND,
        /// `text` are bytes at a Unix socket; on a page those of a frame that the host must refuse with `number`.
        SEND_BYTES,
        /// A part of the frame `text`, then it closes.
        SEND_PART,
        /// `number` events ago; `text` is a name or empty. `other`: in this run, a former one, or none.
        RESUME,
        CLOSE,
        END_OUTPUT,
        PAUSE,
        READ,
        /// `number` milliseconds.
        ADVANCE,
        KILL,
        POWER_CUT,
        STOP,
        /// At the disk's call `number` from now.
        KILL_AT,
        POWER_CUT_AT,
        /// `other` calls from the call `number` on.
        FAIL_AT,
        /// The power is cut, and again at the disk's call `number` of the start.
        POWER_CUT_TWICE,
    };

    Type type = Type::SEND;
    /// Which client.
    std::size_t slot = 0;
    std::string text;
    long number = 0;
    long other = 0;
    /// How many steps the host makes after it; less than 0: until nothing can happen without time.
    int steps = -1;
};

/// For people.
std::string describe(const Operation& operation);

/// Clients: what kind of connection each has.
const std::vector<Kind>& slots();

/// The operations of a seed.
std::vector<Operation> operationsOf(std::uint64_t seed, std::size_t count);

}  // namespace SettingsSimulation
