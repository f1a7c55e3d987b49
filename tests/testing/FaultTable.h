#pragma once

#include <set>
#include <string>
#include <vector>

namespace SettingsHandlerTests {

/// A fault that the faulty implementations can have, and the checks that find it, as `StorageContract.ReplacesAValue`.
struct FoundFault {
    std::string name;
    std::set<std::string> foundBy;
};

/// All faults; the first is "no fault".
const std::vector<FoundFault>& faults();

}  // namespace SettingsHandlerTests
