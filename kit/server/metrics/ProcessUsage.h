#pragma once

#include <cstddef>

namespace SettingsHandlerKit {

/// What the kernel reports about this process; a number that cannot be read is 0.
struct ProcessUsage {
    double cpuSeconds = 0;
    double residentBytes = 0;
    double virtualBytes = 0;
    double openDescriptors = 0;
    double maximumDescriptors = 0;
    /// Since the epoch.
    double startSeconds = 0;
};

ProcessUsage readProcessUsage();

}  // namespace SettingsHandlerKit
