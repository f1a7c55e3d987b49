#pragma once

#include <chrono>
#include <memory>

#include "SettingsHandlerKit/Storage.h"
#include "server/loop/EventLoop.h"
#include "server/loop/RepeatingTimer.h"

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

/// Backs the storage up once a day, a few pages per turn of the event loop, so that clients are served meanwhile. A
/// failure is retried at the next check, which also finishes an incomplete log-out. Event loop and storage outlive it.
class BackupSchedule {
public:
    BackupSchedule(SettingsHandlerKit::EventLoop& loop, SettingsHandlerKit::Storage& storage,
                   const BackupTimes& times = {});
    ~BackupSchedule();

    BackupSchedule(const BackupSchedule&) = delete;
    BackupSchedule& operator=(const BackupSchedule&) = delete;

private:
    void check();
    void copyPages();

    SettingsHandlerKit::EventLoop& loop;
    SettingsHandlerKit::Storage& storage;
    BackupTimes times;
    std::unique_ptr<SettingsHandlerKit::RepeatingTimer> copyTimer;
    SettingsHandlerKit::RepeatingTimer checkTimer;
};

}  // namespace SettingsHost
