#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include <malloc.h>

#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "Wire/Catalogue.h"
#include "server/metrics/ServerMetrics.h"
#include "support/RegularExpression.h"

namespace SettingsHandlerKit {

class ServerMetricsTest : public ::testing::Test {
protected:
    /// The lines of `family` in the text whose value is not 0, without the family's name.
    std::vector<std::string> lines(const std::string& family) {
        std::istringstream text(metrics.text());
        std::vector<std::string> found;
        for (std::string line; std::getline(text, line);) {
            if (line.rfind(family, 0) == 0 && line.substr(line.rfind(' ')) != " 0") {
                found.push_back(line.substr(family.size()));
            }
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    std::size_t seriesCount() {
        const std::string text = metrics.text();
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }

    ServerMetrics metrics{"1.2.3"};
    SettingsHandlerTesting::FakeClient onSocket{Origin::SOCKET};
    SettingsHandlerTesting::FakeClient onPage{Origin::PAGE};
    SettingsHandlerTesting::FakeClient onDevice{Origin::DEVICE};
};

TEST_F(ServerMetricsTest, CountsChangesBySettingAndKnownValue) {
    for (const auto* name :
         {"deviceName_Living room", "deviceName_under_scored", "deviceName_true", "friendlyName_", "friendlyName_error",
          "handsFreeEnabled_true", "handsFreeEnabled_TRUE", "captionsFontSize_FONT_LARGE", "captionsFontSize_FONT_X",
          "captionsStyles_STYLE_YELLOW_ON_BLUE", "captionsStyles_FONT_LARGE", "secret_true", "noSeparator", ""}) {
        metrics.recordCounter(name, 0, 1, 1.0);
    }
    metrics.recordEvent("app_events", "AUTO", {{"interaction_name", "deviceName_x"}});
    EXPECT_EQ(
        lines("settings_host_changes_total"),
        (std::vector<std::string>{
            R"({setting="captionsFontSize",value="FONT_LARGE"} 1)", R"({setting="captionsFontSize",value="other"} 1)",
            R"({setting="captionsStyles",value="STYLE_YELLOW_ON_BLUE"} 1)",
            R"({setting="captionsStyles",value="other"} 1)", R"({setting="deviceName",value="other"} 3)",
            R"({setting="friendlyName",value="error"} 1)", R"({setting="friendlyName",value="other"} 1)",
            R"({setting="handsFreeEnabled",value="other"} 1)", R"({setting="handsFreeEnabled",value="true"} 1)",
            R"({setting="other",value="other"} 3)"}));
}

TEST_F(ServerMetricsTest, EverySeriesOfChangesCanBeCounted) {
    std::istringstream text(metrics.text());
    std::map<std::string, std::set<std::string>> values;
    for (std::string line; std::getline(text, line);) {
        const auto parts =
            TestSupport::matchOf(line, R"re(settings_host_changes_total\{setting="(\w+)",value="(\w+)"\} 0)re");
        if (!parts.empty()) {
            values[parts[1]].insert(parts[2]);
        }
    }
    std::map<std::string, std::set<std::string>> expected{{"other", {"other"}}};
    for (const auto& setting : Wire::catalogue()) {
        if (!setting.setByDeviceOnly) {
            expected[setting.key] = {setting.values.begin(), setting.values.end()};
            expected[setting.key].insert("other");
        }
    }
    // The voice SDK may refuse these.
    for (const auto* key : {"friendlyName", "handsFreeAlwaysOnEnabled", "pttAlwaysOnEnabled"}) {
        expected[key].insert("error");
    }
    EXPECT_EQ(values, expected);
}

TEST_F(ServerMetricsTest, AFloodOfDistinctNamesAddsNoSeriesAndNoMemory) {
    metrics.recordCounter("warm_up", 0, 1, 1.0);
    const std::size_t before = seriesCount();
    const auto heapBefore = ::mallinfo2().uordblks;
    for (int number = 0; number < 100000; ++number) {
        const std::string text = "kitchen " + std::to_string(number);
        metrics.recordCounter("deviceName_" + text, 0, 1, 1.0);
        metrics.recordCounter(text + "_true", 0, 1, 1.0);
        metrics.frameRefused(text);
        metrics.requestHandled(number, RequestOutcome::SILENT);
    }
    const auto heapAfter = ::mallinfo2().uordblks;
    // The allocators of the sanitizers do not report here.
    EXPECT_LT(heapAfter, heapBefore + 10000);
    EXPECT_EQ(seriesCount(), before);
    EXPECT_EQ(metrics.text().find("kitchen"), std::string::npos);
    EXPECT_EQ(lines("settings_host_refusals_total"), std::vector<std::string>{R"({code="other"} 100000)"});
}

TEST_F(ServerMetricsTest, CountsRequestsByTypeAndOutcomeAndRefusalsByCode) {
    metrics.requestHandled(7, RequestOutcome::ANSWERED);
    metrics.requestHandled(24, RequestOutcome::CHANGED);
    metrics.requestHandled(24, RequestOutcome::CHANGED);
    metrics.requestHandled(24, RequestOutcome::REJECTED);
    metrics.requestHandled(18, RequestOutcome::ANSWERED);
    metrics.requestHandled(19, RequestOutcome::SILENT);
    metrics.requestHandled(22, RequestOutcome::FAILED);
    metrics.requestHandled(99, RequestOutcome::SILENT);
    metrics.frameRefused("not-json");
    metrics.frameRefused("too-large");
    EXPECT_EQ(lines("settings_host_requests_total"),
              (std::vector<std::string>{
                  R"({outcome="answered",type="get_settings"} 1)", R"({outcome="answered",type="is_selected"} 1)",
                  R"({outcome="changed",type="set_settings"} 2)", R"({outcome="failed",type="log_out"} 1)",
                  R"({outcome="kept_away",type="set_settings"} 1)", R"({outcome="silent",type="open_settings"} 1)",
                  R"({outcome="silent",type="other"} 1)"}));
    EXPECT_EQ(lines("settings_host_refusals_total"),
              (std::vector<std::string>{R"({code="not-json"} 1)", R"({code="too-large"} 1)"}));
}

TEST_F(ServerMetricsTest, CountsConnectedSlowAndRefusedClients) {
    metrics.clientConnected(onSocket);
    metrics.clientConnected(onSocket);
    metrics.clientConnected(onPage);
    metrics.clientConnected(onDevice);
    metrics.clientDisconnected(onSocket, DisconnectReason::CLOSED);
    metrics.clientDisconnected(onPage, DisconnectReason::TOO_SLOW);
    metrics.frameReceived(onSocket, "x");
    metrics.frameSent(nullptr, "x");
    EXPECT_EQ(lines("settings_host_clients{"),
              (std::vector<std::string>{R"(door="device"} 1)", R"(door="socket"} 1)"}));
    EXPECT_EQ(lines("settings_host_slow_clients_disconnected_total"), std::vector<std::string>{R"({door="page"} 1)"});
    metrics.clientRefused(Origin::SOCKET);
    metrics.clientRefused(Origin::SOCKET);
    metrics.clientRefused(Origin::DEVICE);
    EXPECT_EQ(lines("settings_host_clients_turned_away_total"),
              (std::vector<std::string>{R"({door="device"} 1)", R"({door="socket"} 2)"}));
}

TEST_F(ServerMetricsTest, TimesTheStorage) {
    using std::chrono::microseconds;
    metrics.storageOperation(StorageOperation::WRITE, true, microseconds(200));
    metrics.storageOperation(StorageOperation::WRITE, false, microseconds(20000));
    metrics.storageOperation(StorageOperation::READ, true, microseconds(50));
    EXPECT_EQ(lines("settings_host_storage_failures_total"), std::vector<std::string>{R"({operation="write"} 1)"});
    EXPECT_EQ(lines("settings_host_storage_seconds_count"),
              (std::vector<std::string>{R"({operation="read"} 1)", R"({operation="write"} 2)"}));
    EXPECT_EQ(lines("settings_host_storage_seconds_sum"),
              (std::vector<std::string>{R"({operation="read"} 5e-05)", R"({operation="write"} 0.0202)"}));
    EXPECT_EQ(lines(R"(settings_host_storage_seconds_bucket{operation="write",)"),
              (std::vector<std::string>{R"(le="+Inf"} 2)", R"(le="0.0003"} 1)", R"(le="0.001"} 1)", R"(le="0.003"} 1)",
                                        R"(le="0.01"} 1)", R"(le="0.03"} 2)", R"(le="0.1"} 2)", R"(le="0.3"} 2)",
                                        R"(le="1"} 2)"}));
}

TEST_F(ServerMetricsTest, HoldsTheMetricsOfItsProcess) {
    EXPECT_EQ(lines("settings_host_build_info"), std::vector<std::string>{R"({version="1.2.3"} 1)"});
    const auto metric = [&](const std::string& name) {
        const auto found = lines(name + " ");
        return found.empty() ? 0 : std::stod(found[0]);
    };
    const auto now = static_cast<double>(::time(nullptr));
    EXPECT_NEAR(metric("process_start_time_seconds"), now, 3600);
    EXPECT_GT(metric("process_resident_memory_bytes"), 1e6);
    EXPECT_GT(metric("process_virtual_memory_bytes"), metric("process_resident_memory_bytes"));
    EXPECT_GE(metric("process_open_fds"), 3);
    EXPECT_GE(metric("process_max_fds"), metric("process_open_fds"));
    const double before = metric("process_cpu_seconds_total");
    for (volatile long spin = 0; spin < 100000000; spin = spin + 1) {
    }
    EXPECT_GT(metric("process_cpu_seconds_total"), before);
}

}  // namespace SettingsHandlerKit
