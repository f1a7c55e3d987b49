#include "server/protocol/SettingObservers.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "SettingsHandlerKit/Logging.h"

namespace SettingsHandlerKit {

struct Observation::Entry {
    std::optional<std::string> key;
    SettingObserver observer;
    /// Held during a call. Recursive: an observer may end its own subscription.
    std::recursive_mutex calls;
    bool ended = false;
};

Observation::Observation(std::shared_ptr<Entry> made) : entry(std::move(made)) {}

Observation::~Observation() {
    end();
}

Observation& Observation::operator=(Observation&& other) noexcept {
    if (this != &other) {
        end();
        entry = std::move(other.entry);
    }
    return *this;
}

void Observation::end() {
    if (const auto ending = std::exchange(entry, nullptr)) {
        const std::lock_guard<std::recursive_mutex> lock(ending->calls);
        ending->ended = true;
    }
}

Observation SettingObservers::add(std::optional<std::string> key, SettingObserver observer) {
    const auto entry = std::make_shared<Observation::Entry>();
    entry->key = std::move(key);
    entry->observer = std::move(observer);
    const std::lock_guard<std::mutex> lock(mutex);
    entries.push_back(entry);
    return Observation(entry);
}

bool SettingObservers::empty() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return entries.empty();
}

void SettingObservers::tell(ObservedSetting what) {
    waiting.push_back(std::move(what));
}

/// Forgets those that ended.
SettingObservers::Entries SettingObservers::current() {
    const std::lock_guard<std::mutex> lock(mutex);
    Entries found;
    for (const auto& entry : entries) {
        if (auto alive = entry.lock()) {
            found.push_back(std::move(alive));
        }
    }
    entries.assign(found.begin(), found.end());
    return found;
}

void SettingObservers::call(Observation::Entry& entry, const ObservedSetting& what) {
    const std::lock_guard<std::recursive_mutex> lock(entry.calls);
    if (entry.ended || (entry.key && *entry.key != what.settingDBId)) {
        return;
    }
    try {
        entry.observer(what);
    } catch (const std::exception& error) {
        writeLog(VessaLogger::ERROR, std::string("an observer of settings failed: ") + error.what());
    }
}

void SettingObservers::deliver() {
    if (waiting.empty() || std::exchange(delivering, true)) {
        return;
    }
    while (!waiting.empty()) {
        const ObservedSetting what = std::move(waiting.front());
        waiting.pop_front();
        for (const auto& entry : current()) {
            call(*entry, what);
        }
    }
    delivering = false;
}

}  // namespace SettingsHandlerKit
