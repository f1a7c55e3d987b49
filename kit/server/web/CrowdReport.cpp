#include "server/web/CrowdReport.h"

#include <utility>

namespace SettingsHost {

CrowdReport::CrowdReport(EventLoop& eventLoop, Tell teller, std::chrono::milliseconds time)
    : loop(eventLoop), tell(std::move(teller)), interval(time) {}

void CrowdReport::strangerHadToGo() {
    ++untold;
    if (!timer) {
        timer.emplace(loop, interval, interval, [this] { intervalEnded(); });
        tell(std::exchange(untold, 0));
    }
}

void CrowdReport::intervalEnded() {
    if (untold == 0) {
        timer.reset();
        return;
    }
    tell(std::exchange(untold, 0));
}

}  // namespace SettingsHost
