#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>

#include "server/loop/RepeatingTimer.h"

namespace SettingsHandlerKit {

/// Reports how many unauthenticated connections were closed to make room: the first at once, those of each `interval`
/// after it together at its end, as long as there are any. So a flood of connections does not flood the log.
class EvictionReport {
public:
    using Report = std::function<void(std::size_t count)>;

    EvictionReport(EventLoop& loop, Report report, std::chrono::milliseconds interval = std::chrono::minutes(1));

    void connectionEvicted();

private:
    void intervalEnded();

    EventLoop& loop;
    Report report;
    std::chrono::milliseconds interval;
    std::size_t unreported = 0;
    /// Runs only while an interval is open: an idle host sleeps.
    std::optional<RepeatingTimer> timer;
};

}  // namespace SettingsHandlerKit
