#include "server/web/EvictionReport.h"

#include <utility>

namespace SettingsHandlerKit {

EvictionReport::EvictionReport(EventLoop& eventLoop, Report reportCount, std::chrono::milliseconds time)
    : loop(eventLoop), report(std::move(reportCount)), interval(time) {}

void EvictionReport::connectionEvicted() {
    ++unreported;
    if (!timer) {
        timer.emplace(loop, interval, interval, [this] { intervalEnded(); });
        report(std::exchange(unreported, 0));
    }
}

void EvictionReport::intervalEnded() {
    if (unreported == 0) {
        timer.reset();
        return;
    }
    report(std::exchange(unreported, 0));
}

}  // namespace SettingsHandlerKit
