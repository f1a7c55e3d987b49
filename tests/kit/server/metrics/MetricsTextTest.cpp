#include <algorithm>
#include <functional>
#include <sstream>

#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "server/metrics/ServerMetrics.h"

namespace SettingsHandlerKit {

namespace {

using Lines = std::vector<std::string>;

/// The lines of `text` that `isWanted`, sorted: the library gives no order.
Lines linesOf(const std::string& text, const std::function<bool(const std::string&)>& isWanted) {
    std::istringstream stream(text);
    Lines lines;
    for (std::string line; std::getline(stream, line);) {
        if (isWanted(line)) {
            lines.push_back(line);
        }
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

bool isComment(const std::string& line) {
    return line.rfind('#', 0) == 0;
}

/// Is it a series of the host's own that is not at 0? Buckets are left out.
bool isCounted(const std::string& line) {
    const bool zero = line.size() > 2 && line.substr(line.size() - 2) == " 0";
    return !isComment(line) && !zero && line.rfind("process_", 0) != 0 && line.find("_bucket{") == std::string::npos;
}

}  // namespace

TEST(MetricsTextTest, DescribesEachFamilyOnce) {
    EXPECT_EQ(
        linesOf(ServerMetrics("1.2.3").text(), isComment),
        (Lines{
            "# HELP process_cpu_seconds_total Processor time used, in seconds.",
            "# HELP process_max_fds The most descriptors that may be open.",
            "# HELP process_open_fds Open descriptors.",
            "# HELP process_resident_memory_bytes Resident memory.",
            "# HELP process_start_time_seconds When the process started, since the epoch.",
            "# HELP process_virtual_memory_bytes Virtual memory.",
            "# HELP settings_host_build_info The version that runs, as a label.",
            "# HELP settings_host_changes_total Accepted changes and failed ones (value \"error\").",
            "# HELP settings_host_clients Clients that are connected.",
            "# HELP settings_host_clients_turned_away_total Clients refused because there was no room.",
            "# HELP settings_host_refusals_total Frames that the transport refused.",
            "# HELP settings_host_requests_total Requests that reached the handler.",
            "# HELP settings_host_slow_clients_disconnected_total Clients disconnected because they did not read.",
            "# HELP settings_host_storage_failures_total Operations of the storage that failed.",
            "# HELP settings_host_storage_seconds How long operations of the storage took.",
            "# TYPE process_cpu_seconds_total counter",
            "# TYPE process_max_fds gauge",
            "# TYPE process_open_fds gauge",
            "# TYPE process_resident_memory_bytes gauge",
            "# TYPE process_start_time_seconds gauge",
            "# TYPE process_virtual_memory_bytes gauge",
            "# TYPE settings_host_build_info gauge",
            "# TYPE settings_host_changes_total counter",
            "# TYPE settings_host_clients gauge",
            "# TYPE settings_host_clients_turned_away_total counter",
            "# TYPE settings_host_refusals_total counter",
            "# TYPE settings_host_requests_total counter",
            "# TYPE settings_host_slow_clients_disconnected_total counter",
            "# TYPE settings_host_storage_failures_total counter",
            "# TYPE settings_host_storage_seconds histogram",
        }));
}

TEST(MetricsTextTest, GivesItsSeries) {
    ServerMetrics metrics("1.2.3");
    SettingsHandlerTesting::FakeClient onPage{Origin::PAGE};
    metrics.recordCounter("deviceName_Nursery", 0, 1, 1.0);
    metrics.clientConnected(onPage);
    metrics.frameRefused("not-json");
    metrics.requestHandled(24, RequestOutcome::CHANGED);
    metrics.storageOperation(StorageOperation::WRITE, false, std::chrono::milliseconds(250));
    EXPECT_EQ(linesOf(metrics.text(), isCounted),
              (Lines{
                  R"(settings_host_build_info{version="1.2.3"} 1)",
                  R"(settings_host_changes_total{setting="deviceName",value="other"} 1)",
                  R"(settings_host_clients{door="page"} 1)",
                  R"(settings_host_refusals_total{code="not-json"} 1)",
                  R"(settings_host_requests_total{outcome="changed",type="set_settings"} 1)",
                  R"(settings_host_storage_failures_total{operation="write"} 1)",
                  R"(settings_host_storage_seconds_count{operation="write"} 1)",
                  R"(settings_host_storage_seconds_sum{operation="write"} 0.25)",
              }));
}

TEST(MetricsTextTest, ShowsEverySeriesFromTheStart) {
    const std::string text = ServerMetrics("1.2.3").text();
    const auto series = [&](const std::string& family) {
        std::istringstream stream(text);
        int count = 0;
        for (std::string line; std::getline(stream, line);) {
            count += line.rfind(family + "{", 0) == 0 ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(series("settings_host_requests_total"), 6 * 5);
    EXPECT_EQ(series("settings_host_refusals_total"), 12);
    EXPECT_EQ(series("settings_host_clients"), 3);
    EXPECT_EQ(series("settings_host_clients_turned_away_total"), 3);
    EXPECT_EQ(series("settings_host_slow_clients_disconnected_total"), 3);
    EXPECT_EQ(series("settings_host_storage_failures_total"), 4);
    EXPECT_EQ(series("settings_host_storage_seconds_bucket"), 4 * 10);
}

}  // namespace SettingsHandlerKit
