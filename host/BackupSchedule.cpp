#include "BackupSchedule.h"

#include "service/logging/HostLog.h"
#include "storage/LogOut.h"

namespace SettingsHost {

BackupSchedule::BackupSchedule(EventLoop& eventLoop, Database& source, const BackupRhythm& chosenRhythm)
    : loop(eventLoop),
      database(source),
      rhythm(chosenRhythm),
      looks(loop, rhythm.firstLook, rhythm.look, [this] { lookAtAge(); }) {}

void BackupSchedule::lookAtAge() {
    if (backup || !database.isWritable()) {
        return;
    }
    finishLogOut(database);
    if (!isBackupDue(database.file(), rhythm.maximumAge)) {
        return;
    }
    try {
        backup = std::make_unique<Backup>(database);
        turns = std::make_unique<RepeatingTimer>(loop, std::chrono::milliseconds(0), std::chrono::milliseconds(1),
                                                 [this] { copyOn(); });
    } catch (const DatabaseError& error) {
        logHost(VessaLogger::ERROR, std::string("cannot begin a backup of the database: ") + error.what());
    }
}

void BackupSchedule::copyOn() {
    try {
        if (backup->step(rhythm.pagesPerTurn)) {
            return;
        }
        logHost(VessaLogger::INFORMATION, "backed the database up");
    } catch (const DatabaseError& error) {
        logHost(VessaLogger::ERROR, std::string("cannot back the database up: ") + error.what());
    }
    giveUp();
}

void BackupSchedule::giveUp() {
    backup.reset();
    turns.reset();
}

}  // namespace SettingsHost
