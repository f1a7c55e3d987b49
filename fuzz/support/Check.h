#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace SettingsHandlerFuzz {

using Entries = std::vector<std::string>;

/// Prints both and ends the process, so that the fuzzer keeps the input.
[[noreturn]] void fail(std::string_view what, std::string_view detail);

/// Fails with `what` and `detail` unless `holds`. They are views, because no text is made for a check that holds.
inline void check(bool holds, std::string_view what, std::string_view detail = {}) {
    if (!holds) {
        fail(what, detail);
    }
}

/// Prints the first difference and fails unless the journals are equal. The order in which observers of one change are
/// notified is not specified, so neighbouring entries of observers are compared as a set.
void checkSame(const Entries& actual, const Entries& expected, std::string_view what, std::string_view detail = {});

bool startsWithOneOf(const std::string& entry, std::initializer_list<std::string_view> beginnings);
/// Returns: whether an entry starts with one of `beginnings`.
bool hasEntry(const Entries& entries, std::initializer_list<std::string_view> beginnings);

}  // namespace SettingsHandlerFuzz
