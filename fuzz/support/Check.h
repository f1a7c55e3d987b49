#pragma once

#include <string>
#include <vector>

namespace SettingsHandlerFuzz {

using Entries = std::vector<std::string>;

/// Prints `what` and ends the process, so that the fuzzer keeps the input, unless `holds`.
void check(bool holds, const std::string& what);

/// Prints the first difference and ends the process unless the journals are equal. The order in which observers of one
/// change are notified is not specified, so neighbouring entries of observers are compared as a set.
void checkSame(Entries actual, Entries expected, const std::string& what);

/// Returns: whether an entry starts with one of `beginnings`.
bool hasEntry(const Entries& entries, const std::vector<std::string>& beginnings);

}  // namespace SettingsHandlerFuzz
