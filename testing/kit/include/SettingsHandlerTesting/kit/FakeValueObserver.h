#pragma once

#include <string>
#include <utility>
#include <vector>

#include "SettingsHandlerKit/ValueObserver.h"
#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// In place of `Server::valueObserver`, for tests of a bridge or device that reports values that changed at their
/// owner.
///
/// Entries: `values.valueChanged(captionsEnabled)`. Threads: one.
class FakeValueObserver : public SettingsHandlerKit::ValueObserver {
public:
    /// Records into `recorder`, which must outlive it.
    explicit FakeValueObserver(Journal& recorder) : journal(recorder) {}

    void valueChanged(const std::string& settingDBId) override {
        keys.push_back(settingDBId);
        journal.add("values.valueChanged(" + settingDBId + ")");
    }

    /// Removes and returns the keys so far.
    std::vector<std::string> take() { return std::exchange(keys, {}); }

private:
    Journal& journal;
    std::vector<std::string> keys;
};

}  // namespace SettingsHandlerTesting
