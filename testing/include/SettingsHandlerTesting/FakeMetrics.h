#pragma once

#include <map>
#include <sstream>
#include <string>

#include "Metrics/MetricsDelegateInterface.h"
#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// A metrics sink. Entries: `metrics.recordCounter(deviceName_Den, 0, 1, 1)`,
/// `metrics.recordEvent(app_events, AUTO, interaction_name=deviceName_Den)`.
class FakeMetrics : public Metrics::MetricsDelegateInterface {
public:
    explicit FakeMetrics(Journal& recorder) : journal(recorder) {}

    void recordEvent(const std::string& group, const std::string& source,
                     const std::unordered_map<std::string, std::string>& attributes) override {
        std::string text = "metrics.recordEvent(" + group + ", " + source;
        for (const auto& [name, value] : std::map<std::string, std::string>(attributes.begin(), attributes.end())) {
            text.append(", ").append(name).append("=").append(value);
        }
        journal.add(text + ")");
    }

    void recordCounter(const std::string& name, int first, int second, double third) override {
        std::ostringstream text;
        text << "metrics.recordCounter(" << name << ", " << first << ", " << second << ", " << third << ")";
        journal.add(text.str());
    }

private:
    Journal& journal;
};

}  // namespace SettingsHandlerTesting
