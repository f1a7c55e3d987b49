#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace SettingsHandlerKit {

enum class StorageOperation { READ, WRITE, REMOVE, CLEAR };

/// Is notified after each operation of the storage. Must not call the storage.
class StorageObserver {
public:
    StorageObserver() = default;
    StorageObserver(const StorageObserver&) = delete;
    StorageObserver& operator=(const StorageObserver&) = delete;
    virtual ~StorageObserver() = default;

    virtual void storageOperation(StorageOperation operation, bool succeeded, std::chrono::nanoseconds duration) = 0;
};

/// The health of the storage.
struct StorageHealth {
    /// Did the last attempted change reach the database? Changes beyond a limit do not count.
    bool writable = true;
    /// Failed operations since the start, and the reason of the last one, without keys or values.
    unsigned long failures = 0;
    std::string lastFailure;
    /// The number of stored keys; 0 when they cannot be counted.
    std::size_t keys = 0;
};

}  // namespace SettingsHandlerKit
