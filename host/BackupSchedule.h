#pragma once

#include <chrono>
#include <memory>

#include "server/loop/EventLoop.h"
#include "server/loop/RepeatingTimer.h"
#include "storage/Backup.h"

namespace SettingsHost {

/// When the age of the backups is checked, and how many pages are copied in one turn of the event loop.
struct BackupTimes {
    /// Soon after the start, since many devices run for an hour a day; not at once, since people wait for the start.
    std::chrono::milliseconds firstCheck = std::chrono::seconds(5);
    std::chrono::milliseconds checkInterval = std::chrono::hours(1);
    std::chrono::seconds maximumAge = std::chrono::hours(24);
    /// 64 KiB with pages of the usual size.
    int pagesPerTurn = 16;
};

/// Backs the database up once a day, a few pages per turn of the event loop, so that clients are served meanwhile. A
/// failure is logged at level 3 and retried at the next check, which also finishes an incomplete log-out, see
/// storage/LogOut.h. The event loop and the database outlive it.
class BackupSchedule {
public:
    BackupSchedule(SettingsHandlerKit::EventLoop& loop, SettingsHandlerKit::Database& database,
                   const BackupTimes& times = {});

    BackupSchedule(const BackupSchedule&) = delete;
    BackupSchedule& operator=(const BackupSchedule&) = delete;

    /// Stops a backup in progress and removes its copy. The next check starts a new one.
    void cancel();

private:
    void check();
    void copyPages();

    SettingsHandlerKit::EventLoop& loop;
    SettingsHandlerKit::Database& database;
    BackupTimes times;
    std::unique_ptr<SettingsHandlerKit::Backup> backup;
    std::unique_ptr<SettingsHandlerKit::RepeatingTimer> copyTimer;
    SettingsHandlerKit::RepeatingTimer checkTimer;
};

}  // namespace SettingsHost
