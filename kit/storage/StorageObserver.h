#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace SettingsHost {

enum class StorageOperation { READ, WRITE, REMOVE, CLEAR };

/// Told of each operation of the storage once it is over. It does not call back.
class StorageObserver {
public:
    StorageObserver() = default;
    StorageObserver(const StorageObserver&) = delete;
    StorageObserver& operator=(const StorageObserver&) = delete;
    virtual ~StorageObserver() = default;

    virtual void storageOperation(StorageOperation operation, bool succeeded, std::chrono::nanoseconds duration) = 0;
};

/// How the storage fares.
struct StorageHealth {
    /// Did the last change that was tried reach the database? What is refused for its size does not count.
    bool writable = true;
    /// Operations that failed since the start, and why the last one did; never a key or a value.
    unsigned long failures = 0;
    std::string lastFailure;
    /// How many keys are stored; 0 when they cannot be counted.
    std::size_t keys = 0;
};

}  // namespace SettingsHost
