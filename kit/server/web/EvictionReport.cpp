#include "server/web/EvictionReport.h"

#include <utility>

namespace SettingsHost {

EvictionReport::EvictionReport(EventLoop& eventLoop, Tell teller, std::chrono::milliseconds time)
    : loop(eventLoop), tell(std::move(teller)), interval(time) {}

void EvictionReport::connectionEvicted() {
    ++unreported;
    if (!timer) {
        timer.emplace(loop, interval, interval, [this] { intervalEnded(); });
        tell(std::exchange(unreported, 0));
    }
}

void EvictionReport::intervalEnded() {
    if (unreported == 0) {
        timer.reset();
        return;
    }
    tell(std::exchange(unreported, 0));
}

}  // namespace SettingsHost
