#include "BackupSchedule.h"

#include "service/logging/HostLog.h"
#include "storage/LogOut.h"

namespace SettingsHost {

BackupSchedule::BackupSchedule(SettingsHandlerKit::EventLoop& eventLoop, SettingsHandlerKit::Database& source,
                               const BackupTimes& chosenTimes)
    : loop(eventLoop),
      database(source),
      times(chosenTimes),
      checkTimer(loop, times.firstCheck, times.checkInterval, [this] { check(); }) {}

void BackupSchedule::check() {
    if (backup || !database.isWritable()) {
        return;
    }
    SettingsHandlerKit::finishLogOut(database);
    if (!SettingsHandlerKit::isBackupDue(database.file(), times.maximumAge)) {
        return;
    }
    try {
        backup = std::make_unique<SettingsHandlerKit::Backup>(database);
        copyTimer = std::make_unique<SettingsHandlerKit::RepeatingTimer>(
            loop, std::chrono::milliseconds(0), std::chrono::milliseconds(1), [this] { copyPages(); });
    } catch (const SettingsHandlerKit::DatabaseError& error) {
        SettingsHandlerKit::logHost(VessaLogger::ERROR, std::string("cannot start a database backup: ") + error.what());
    }
}

void BackupSchedule::copyPages() {
    try {
        if (backup->step(times.pagesPerTurn)) {
            return;
        }
        SettingsHandlerKit::logHost(VessaLogger::INFORMATION, "database backed up");
    } catch (const SettingsHandlerKit::DatabaseError& error) {
        SettingsHandlerKit::logHost(VessaLogger::ERROR, std::string("database backup failed: ") + error.what());
    }
    cancel();
}

void BackupSchedule::cancel() {
    backup.reset();
    copyTimer.reset();
}

}  // namespace SettingsHost
