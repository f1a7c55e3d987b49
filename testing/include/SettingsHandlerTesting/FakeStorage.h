#pragma once

#include <map>
#include <string>

#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// A storage in memory. Entries: `storage.getValue(deviceName)`, `storage.setValue(deviceName, Den)`,
/// `storage.removeValue(…)`, `storage.clearStorage()`. Unlike a real one it has no limits and loses all with the
/// object.
class FakeStorage : public SDKWrapper::StorageManagerInterface {
public:
    explicit FakeStorage(Journal& recorder) : journal(recorder) {}

    /// What is stored. Tests may read and change it at will.
    std::map<std::string, std::string> values;
    /// Knobs: answer false and change nothing.
    bool refusesWrites = false;
    bool refusesRemoval = false;
    bool refusesClearing = false;

    void getValue(const std::string& key, std::string& value) override {
        const auto entry = values.find(key);
        value = entry == values.end() ? "" : entry->second;
        journal.add("storage.getValue(" + key + ")");
    }

    bool setValue(const std::string& key, const std::string& value) override {
        journal.add("storage.setValue(" + key + ", " + value + ")");
        if (!refusesWrites) {
            values[key] = value;
        }
        return !refusesWrites;
    }

    bool removeValue(const std::string& key) override {
        journal.add("storage.removeValue(" + key + ")");
        if (!refusesRemoval) {
            values.erase(key);
        }
        return !refusesRemoval;
    }

    bool clearStorage() override {
        journal.add("storage.clearStorage()");
        if (!refusesClearing) {
            values.clear();
        }
        return !refusesClearing;
    }

private:
    Journal& journal;
};

}  // namespace SettingsHandlerTesting
