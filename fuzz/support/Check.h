#pragma once

#include <string>
#include <vector>

namespace SettingsHandlerFuzz {

using Entries = std::vector<std::string>;

/// Ends the process, for the fuzzer to keep the input, unless `holds`; says `what` did not.
void check(bool holds, const std::string& what);

/// Ends the process unless the journals are equal, after showing where they part. The order in which the observers of
/// one change are told is nobody's promise, so neighbouring entries of observers are compared as a set.
void checkSame(Entries actual, Entries expected, const std::string& what);

/// Does an entry start with one of `beginnings`?
bool hasEntry(const Entries& entries, const std::vector<std::string>& beginnings);

}  // namespace SettingsHandlerFuzz
