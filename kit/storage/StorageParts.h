#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/Storage.h"
#include "storage/Backup.h"
#include "storage/KeyValueTable.h"

namespace SettingsHandlerKit {

/// The inside of a storage.
struct Storage::Parts {
    struct Usage {
        int keys;
        std::size_t bytes;
    };
    /// A change of the transaction in progress.
    struct Change {
        StorageOperation operation;
        std::chrono::nanoseconds duration;
    };

    Parts(const std::string& path, const std::shared_ptr<Disk>& disk);

    /// Runs `action` and reports the result to observers and health, a failure also to the log. `what` describes the
    /// failure.
    bool attempt(StorageOperation operation, const std::function<std::string()>& what,
                 const std::function<void()>& action);
    void put(const std::string& key, const std::string& value);
    /// Reports the result of the transaction that has ended, which took `duration` to end.
    void transactionEnded(bool succeeded, std::chrono::nanoseconds duration);

    /// Flushes the folder once the database is closed. SQLite removes the write-ahead log then, but does not make that
    /// durable: after a power cut it was back, with writes that had failed in it.
    class FolderFlush {
    public:
        FolderFlush(std::shared_ptr<Disk> itsDisk, const std::string& file)
            : disk(std::move(itsDisk)), folder(std::filesystem::absolute(file).parent_path().string()) {}
        ~FolderFlush() { disk->sync(folder); }
        FolderFlush(const FolderFlush&) = delete;
        FolderFlush& operator=(const FolderFlush&) = delete;

    private:
        const std::shared_ptr<Disk> disk;
        const std::string folder;
    };

    const FolderFlush afterClosing;
    Recovery recovery;
    Database database;
    KeyValueTable table;
    /// In progress, if any.
    std::unique_ptr<Backup> backup;
    std::vector<std::shared_ptr<StorageObserver>> observers;
    std::vector<std::shared_ptr<ValueObserver>> valueObservers;
    StorageHealth health;
    /// What is stored. Empty until the first `put` counts it, and after other changes and failures: counting reads the
    /// whole table.
    std::optional<Usage> usage;
    /// Those that succeeded so far. They are reported when the transaction has ended.
    std::vector<Change> changes;

private:
    void refuse(const std::string& what, const std::string& why);
    void report(StorageOperation operation, bool succeeded, std::chrono::nanoseconds duration);
    Usage count();
};

}  // namespace SettingsHandlerKit
