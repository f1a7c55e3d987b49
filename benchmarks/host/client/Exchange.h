#pragma once

#include <cstdint>
#include <string>

#include "host/client/FrameConnection.h"

namespace Benchmarks {

/// Sends `bytes` and waits for one frame, which must hold `part`. Returns: how long that took, in microseconds.
double exchange(FrameConnection& connection, const std::string& bytes, const std::string& part);

/// Requests of which each sets `deviceName` to another value than the one before, and so makes an event.
/// Newer than those of all that was made before, wherever that was.
class Changes {
public:
    Changes();

    /// The next request.
    std::string next();
    /// What is found in the event that answers it.
    const std::string& wanted() const { return value; }

private:
    std::int64_t number;
    std::string value;
};

/// GetSettings of everything that is known, and what is found in the reply.
extern const char* const getAllRequest;
extern const char* const getAllReply;

}  // namespace Benchmarks
