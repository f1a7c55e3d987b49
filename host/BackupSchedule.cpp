#include "BackupSchedule.h"

#include "service/logging/HostLog.h"
#include "storage/LogOut.h"

namespace SettingsHost {

BackupSchedule::BackupSchedule(EventLoop& eventLoop, Database& source, const BackupTimes& chosenTimes)
    : loop(eventLoop),
      database(source),
      times(chosenTimes),
      checkTimer(loop, times.firstCheck, times.checkInterval, [this] { check(); }) {}

void BackupSchedule::check() {
    if (backup || !database.isWritable()) {
        return;
    }
    finishLogOut(database);
    if (!isBackupDue(database.file(), times.maximumAge)) {
        return;
    }
    try {
        backup = std::make_unique<Backup>(database);
        copyTimer = std::make_unique<RepeatingTimer>(loop, std::chrono::milliseconds(0), std::chrono::milliseconds(1),
                                                     [this] { copyPages(); });
    } catch (const DatabaseError& error) {
        logHost(VessaLogger::ERROR, std::string("cannot start a database backup: ") + error.what());
    }
}

void BackupSchedule::copyPages() {
    try {
        if (backup->step(times.pagesPerTurn)) {
            return;
        }
        logHost(VessaLogger::INFORMATION, "database backed up");
    } catch (const DatabaseError& error) {
        logHost(VessaLogger::ERROR, std::string("database backup failed: ") + error.what());
    }
    cancel();
}

void BackupSchedule::cancel() {
    backup.reset();
    copyTimer.reset();
}

}  // namespace SettingsHost
