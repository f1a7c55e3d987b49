#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace SettingsHandlerKit {

/// What an operation of the storage does. Setting a value aside is a WRITE.
enum class StorageOperation { READ, WRITE, REMOVE, CLEAR };

/// Is notified after each operation of the storage. Must not call the storage.
class StorageObserver {
public:
    StorageObserver() = default;
    StorageObserver(const StorageObserver&) = delete;
    StorageObserver& operator=(const StorageObserver&) = delete;
    virtual ~StorageObserver() = default;

    /// `succeeded`: false also for a change beyond a limit. The changes of a transaction are reported when it has
    /// ended, with its result; the last one's duration includes that of the end.
    virtual void storageOperation(StorageOperation operation, bool succeeded, std::chrono::nanoseconds duration) = 0;
};

/// The health of the storage.
struct StorageHealth {
    /// Did the last attempted change reach the database? Changes beyond a limit do not count.
    bool writable = true;
    /// Failed operations since the start.
    unsigned long failures = 0;
    /// The reason of the last failure, without keys or values.
    std::string lastFailure;
    /// The number of stored keys; 0 when they cannot be counted.
    std::size_t keys = 0;
};

/// What was done about the database at the start.
struct Recovery {
    /// What the storage started with.
    enum class Source {
        /// The database was good, or there was none yet.
        NOT_NEEDED,
        /// The newest good backup replaced it.
        BACKUP,
        /// No backup was usable: the database is empty.
        DEFAULTS,
    };

    /// What the storage started with.
    Source source = Source::NOT_NEEDED;
    /// The name, without the folder, to which the damaged file was renamed; empty when there was none.
    std::string setAside;
};

}  // namespace SettingsHandlerKit
