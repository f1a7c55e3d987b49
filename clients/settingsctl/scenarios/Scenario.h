#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "Failure.h"

namespace SettingsCtl {

enum class StepKind { SENT, RECEIVED, CLOSED, CLOSED_BY_HOST, KILL, STOP, START };

/// One step of a scenario. docs/laboratory.md has the format.
struct Step {
    std::size_t line = 0;
    std::chrono::milliseconds time{};
    /// The connection, such as "socket-1", or "all", or "host".
    std::string at;
    StepKind kind = StepKind::SENT;
    /// Of SENT and RECEIVED: what passes, to the last character.
    std::string text;
};

struct Scenario {
    std::string file;
    /// The text of a world's file; empty: none.
    std::string world;
    std::vector<Step> steps;
};

/// Reads and checks a scenario, "-" for standard input. Errors: `Failure`, whose text names the line.
Scenario scenarioIn(const std::string& file);

/// The line of the first step, or 1 for a world, that only a host of the replay's own can play; 0: none.
std::size_t lineForOwnHost(const Scenario& scenario);

/// Is the connection `at` one of the settings, at their socket or the web port?
bool isSettingsConnection(const std::string& at);
bool isPage(const std::string& at);

/// "FILE:LINE: MESSAGE" (REFUSED).
Failure failureAt(const std::string& file, std::size_t line, const std::string& message);

}  // namespace SettingsCtl
