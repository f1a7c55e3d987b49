#include "BackupSchedule.h"

namespace SettingsHost {

BackupSchedule::BackupSchedule(SettingsHandlerKit::EventLoop& eventLoop, SettingsHandlerKit::Storage& source,
                               const BackupTimes& chosenTimes)
    : loop(eventLoop),
      storage(source),
      times(chosenTimes),
      checkTimer(loop, times.firstCheck, times.checkInterval, [this] { check(); }) {}

BackupSchedule::~BackupSchedule() {
    storage.cancelBackup();
}

void BackupSchedule::check() {
    if (!copyTimer && storage.beginBackup(times.maximumAge)) {
        copyTimer = std::make_unique<SettingsHandlerKit::RepeatingTimer>(
            loop, std::chrono::milliseconds(0), std::chrono::milliseconds(1), [this] { copyPages(); });
    }
}

void BackupSchedule::copyPages() {
    if (!storage.continueBackup(times.pagesPerTurn)) {
        copyTimer.reset();
    }
}

}  // namespace SettingsHost
