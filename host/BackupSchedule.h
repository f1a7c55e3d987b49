#pragma once

#include <chrono>
#include <memory>

#include "server/loop/EventLoop.h"
#include "server/loop/RepeatingTimer.h"
#include "storage/Backup.h"

namespace SettingsHost {

/// When a backup of the database is due, and how much of a turn of the event loop it may take.
struct BackupRhythm {
    /// Soon after the start, since many a device is on for an hour a day; not at once, since people wait for it then.
    std::chrono::milliseconds firstLook = std::chrono::seconds(5);
    std::chrono::milliseconds look = std::chrono::hours(1);
    std::chrono::seconds maximumAge = std::chrono::hours(24);
    /// 64 KiB with pages of the usual size.
    int pagesPerTurn = 16;
};

/// Backs the database up once a day, a piece a turn of the event loop, so that clients are served meanwhile. What goes
/// wrong is logged at level 3 and tried again at the next look; so is what a log-out could not erase at once, see
/// storage/LogOut.h. The event loop and the database outlive it.
class BackupSchedule {
public:
    BackupSchedule(EventLoop& loop, Database& database, const BackupRhythm& rhythm = {});

    BackupSchedule(const BackupSchedule&) = delete;
    BackupSchedule& operator=(const BackupSchedule&) = delete;

    /// Stops a backup that is being made and removes what it copied. The next look begins anew.
    void giveUp();

private:
    void lookAtAge();
    void copyOn();

    EventLoop& loop;
    Database& database;
    BackupRhythm rhythm;
    std::unique_ptr<Backup> backup;
    std::unique_ptr<RepeatingTimer> turns;
    RepeatingTimer looks;
};

}  // namespace SettingsHost
