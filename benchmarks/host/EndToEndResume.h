#pragma once

#include "host/EndToEndRound.h"

namespace Benchmarks {

/// A client comes back after so many events.
constexpr unsigned missedEvents = 1000;

/// The name of what `measureResume` saw.
constexpr const char* resumeName = "host/unix/memory/client resumes after 1,000 events";

/// A client that comes back and resumes, again and again.
void measureResume(Round& round, const Effort& effort);

}  // namespace Benchmarks
