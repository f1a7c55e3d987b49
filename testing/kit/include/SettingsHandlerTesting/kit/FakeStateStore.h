#pragma once

#include <map>
#include <optional>
#include <string>

#include "SettingsHandlerKit/StateStore.h"
#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// A state store in memory, for tests of a bridge or device that keeps its state in `Storage::state`.
///
/// Entries: `state.load(volume)`, `state.save(volume, 7)`, also when the call is refused.
///
/// Options: `refusesWrites`; exceptions through `Journal::at`.
///
/// Threads: one. Differences from a real one: it has no limits, and its content is lost with the object.
class FakeStateStore : public SettingsHandlerKit::StateStore {
public:
    /// Records into `recorder`, which must outlive it.
    explicit FakeStateStore(Journal& recorder) : journal(recorder) {}

    /// What is stored. Tests may read and change it.
    std::map<std::string, std::string> values;
    /// `save` returns false and changes nothing.
    bool refusesWrites = false;

    std::optional<std::string> load(const std::string& key) override {
        journal.add("state.load(" + key + ")");
        const auto entry = values.find(key);
        return entry == values.end() ? std::nullopt : std::optional(entry->second);
    }

    bool save(const std::string& key, const std::string& value) override {
        journal.add("state.save(" + key + ", " + value + ")");
        if (!refusesWrites) {
            values[key] = value;
        }
        return !refusesWrites;
    }

private:
    Journal& journal;
};

}  // namespace SettingsHandlerTesting
