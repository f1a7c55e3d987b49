#pragma once

#include <cstdio>
#include <map>
#include <mutex>
#include <string>
#include <unordered_map>

#include "Metrics/MetricsDelegateInterface.h"
#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// A metrics sink. Entries: `metrics.recordCounter(deviceName_Den, 0, 1, 1)`,
/// `metrics.recordEvent(app_events, AUTO, interaction_name=deviceName_Den)`.
///
/// Options: exceptions and delays through `Journal::at`. Threads: any.
///
/// Differences from a real one: it sends nothing, and sorts the attributes of an event by name.
class FakeMetrics : public Metrics::MetricsDelegateInterface {
public:
    /// Records into `recorder`, which must outlive it.
    explicit FakeMetrics(Journal& recorder) : journal(recorder) {}

    /// Returns: how often each counter was recorded.
    std::map<std::string, int> counters() const {
        const std::lock_guard<std::mutex> lock(mutex);
        return counted;
    }

    void recordEvent(const std::string& group, const std::string& source,
                     const std::unordered_map<std::string, std::string>& attributes) override {
        std::string text = "metrics.recordEvent(" + group + ", " + source;
        for (const auto& [name, value] : std::map<std::string, std::string>(attributes.begin(), attributes.end())) {
            text.append(", ").append(name).append("=").append(value);
        }
        journal.add(text + ")");
    }

    void recordCounter(const std::string& name, int first, int second, double third) override {
        char shortest[32];
        std::snprintf(shortest, sizeof(shortest), "%g", third);
        journal.add("metrics.recordCounter(" + name + ", " + std::to_string(first) + ", " + std::to_string(second) +
                    ", " + shortest + ")");
        const std::lock_guard<std::mutex> lock(mutex);
        ++counted[name];
    }

private:
    Journal& journal;
    mutable std::mutex mutex;
    std::map<std::string, int> counted;
};

}  // namespace SettingsHandlerTesting
