#include "server/BackupSchedule.h"

namespace SettingsHandlerKit {

BackupSchedule::BackupSchedule(EventLoop& eventLoop, Storage& source, const BackupTimes& chosenTimes)
    : loop(eventLoop),
      storage(source),
      times(chosenTimes),
      checkTimer(loop, times.firstCheck, times.checkInterval, [this] { check(); }) {}

void BackupSchedule::check() {
    if (copyTimer || !storage.beginBackup(times.maximumAge)) {
        return;
    }
    copyTimer.emplace(loop, std::chrono::milliseconds(0), std::chrono::milliseconds(1), [this] {
        if (!storage.continueBackup(times.pagesPerTurn)) {
            copyTimer.reset();
        }
    });
}

}  // namespace SettingsHandlerKit
