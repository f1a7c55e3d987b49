#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulation/Operations.h"

namespace SettingsSimulation {

/// A shorter list of operations with the same finding, as short as could be found with so many runs.
std::vector<Operation> shortest(std::uint64_t seed, std::vector<Operation> operations, const std::string& finding,
                                int runs);

/// The kind of a finding: what it says, without numbers.
std::string kindOf(const std::string& finding);

/// The run of these operations as a scenario, see docs/laboratory.md. Texts for people are those of a run of `all`.
std::string scenarioOf(std::uint64_t seed, const std::vector<Operation>& operations, const std::vector<Operation>& all);

}  // namespace SettingsSimulation
