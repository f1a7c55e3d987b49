#pragma once

#include "SettingsClient/Answer.h"
#include "Verbs.h"

namespace SettingsCtl {

/// Prints what came of a request to set a setting to `wanted`: the change, or that the value is unchanged; a refusal
/// and warnings to standard error. Returns: REFUSED for a refusal.
ExitStatus printResult(const Context& context, const std::string& wanted, const SettingsClient::Answer& answer);

/// Prints results, one after the other. Returns: REFUSED if one was refused.
ExitStatus printResults(const Context& context, const std::vector<SettingsClient::Assignment>& assignments,
                        const std::vector<SettingsClient::Answer>& answers);

}  // namespace SettingsCtl
