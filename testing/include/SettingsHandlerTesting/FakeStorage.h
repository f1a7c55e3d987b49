#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>

#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// A storage in memory.
///
/// Entries: `storage.getValue(deviceName)`, `storage.setValue(deviceName, Den)`, `storage.removeValue(…)`,
/// `storage.clearStorage()`, also when the call is refused.
///
/// Options: what is refused, see below; exceptions and delays through `Journal::at`, which take effect before a write
/// changes anything.
///
/// Threads: any for the operations, `put` and `stored`. Use the other members only while no other thread uses the
/// storage.
///
/// Differences from a real one: it has no limits, and its content is lost with the object.
class FakeStorage : public SDKWrapper::StorageManagerInterface {
public:
    /// Records into `recorder`, which must outlive it.
    explicit FakeStorage(Journal& recorder) : journal(recorder) {}

    /// The stored values. Tests may read and change them.
    std::map<std::string, std::string> values;
    /// Options: return false and change nothing, always …
    /// @{
    bool refusesWrites = false;
    bool refusesRemoval = false;
    bool refusesClearing = false;
    /// @}
    /// … for these keys, written or removed …
    std::set<std::string> refusedKeys;
    /// … or for this many of the next writes, whatever their key.
    int refusedWrites = 0;

    /// Stores a value without an entry, as another program on the device does.
    void put(const std::string& key, const std::string& value) {
        const std::lock_guard<std::mutex> lock(mutex);
        values[key] = value;
    }

    /// Returns: the value stored under `key`, or the empty string. Records no entry.
    std::string stored(const std::string& key) {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto entry = values.find(key);
        return entry == values.end() ? std::string() : entry->second;
    }

    void getValue(const std::string& key, std::string& value) override {
        value = stored(key);
        journal.add("storage.getValue(" + key + ")");
    }

    bool setValue(const std::string& key, const std::string& value) override {
        journal.add("storage.setValue(" + key + ", " + value + ")");
        const std::lock_guard<std::mutex> lock(mutex);
        if (refusedWrites > 0) {
            --refusedWrites;
            return false;
        }
        if (refusesWrites || refusedKeys.count(key) > 0) {
            return false;
        }
        values[key] = value;
        return true;
    }

    bool removeValue(const std::string& key) override {
        journal.add("storage.removeValue(" + key + ")");
        const std::lock_guard<std::mutex> lock(mutex);
        if (refusesRemoval || refusedKeys.count(key) > 0) {
            return false;
        }
        values.erase(key);
        return true;
    }

    bool clearStorage() override {
        journal.add("storage.clearStorage()");
        const std::lock_guard<std::mutex> lock(mutex);
        if (!refusesClearing) {
            values.clear();
        }
        return !refusesClearing;
    }

private:
    Journal& journal;
    std::mutex mutex;
};

}  // namespace SettingsHandlerTesting
