#pragma once

#include <optional>

#include "SettingsHandlerKit/ServerOptions.h"
#include "SettingsHandlerKit/Storage.h"
#include "server/loop/EventLoop.h"
#include "server/loop/RepeatingTimer.h"

namespace SettingsHandlerKit {

/// Backs a storage up once a day, a few pages per turn of the event loop. A failure is retried at the next check, which
/// also finishes an incomplete log-out. The event loop outlives it; the storage may be destroyed first.
class BackupSchedule {
public:
    BackupSchedule(EventLoop& loop, Storage& storage, const BackupTimes& times = {});

    BackupSchedule(const BackupSchedule&) = delete;
    BackupSchedule& operator=(const BackupSchedule&) = delete;

private:
    void check();

    EventLoop& loop;
    Storage& storage;
    BackupTimes times;
    /// While a backup is in progress.
    std::optional<RepeatingTimer> copyTimer;
    RepeatingTimer checkTimer;
};

}  // namespace SettingsHandlerKit
