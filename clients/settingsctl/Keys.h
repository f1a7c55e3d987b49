#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Verbs.h"

namespace SettingsCtl {

/// The key of the catalogue that differs least from `key`: the fewest letters to insert, remove or replace, whatever
/// their case. Of several the first of the catalogue.
std::string nearestKey(const std::string& key);

/// For people: that the catalogue does not have `key`, and the nearest that it has. Nothing for a key of the catalogue,
/// and for every key with `--any-key`.
std::optional<std::string> unknownKey(const Context& context, const std::string& key);

/// Errors: `Failure` (WRONG_USAGE) for the first of `keys` that is unknown.
void refuseUnknownKeys(const Context& context, const std::vector<std::string>& keys);

/// Warns of a value that the catalogue does not list for a choice. It is accepted all the same.
void warnOfUnlistedChoice(const Context& context, const std::string& key, const std::string& value);

}  // namespace SettingsCtl
