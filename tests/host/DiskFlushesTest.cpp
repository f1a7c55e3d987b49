#include "SettingsHandlerKit/CheckedSettingsHandler.h"
#include "SettingsHandlerKit/Storage.h"
#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "kit/support/TrafficRecording.h"
#include "server/metrics/ServerMetrics.h"
#include "server/protocol/MessageHub.h"
#include "simulation/SimulatedAppLaunch.h"
#include "simulation/SimulatedDevice.h"
#include "simulation/SimulatedSdkBridge.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHost {

using namespace SettingsHandlerKit;

namespace {

/// All of the host from its transport to its disk, without listeners. The disk is opened first, and closed last.
struct Host {
    SettingsHostTests::LogRecording log;
    TestSupport::TemporaryDirectory folder;
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    std::shared_ptr<ServerMetrics> metrics = std::make_shared<ServerMetrics>("1");
    std::shared_ptr<MessageHub> hub = std::make_shared<MessageHub>(std::make_shared<TrafficRecording>());
    Storage storage{folder / "settings.db", disk};
    std::unique_ptr<StateStore> state = storage.state("simulation");
    std::shared_ptr<SimulatedDevice> device = std::make_shared<SimulatedDevice>(*state, hub);
    std::shared_ptr<SimulatedSdkBridge> sdk = std::make_shared<SimulatedSdkBridge>(*state, storage, device, hub);
    std::shared_ptr<CheckedSettingsHandler> handler =
        CheckedSettingsHandler::create(hub, storage, metrics, sdk, std::make_shared<SimulatedAppLaunch>(), device);
    std::shared_ptr<SettingsHandlerTesting::FakeClient> client = std::make_shared<SettingsHandlerTesting::FakeClient>();
};

std::string setRequest(const std::string& key, const std::string& value, int timestamp = 2) {
    return R"({"type":24,"timestamp":)" + std::to_string(timestamp) + R"(,"payload":{"settingDBId":")" + key +
           R"(","to":")" + value + "\"}}";
}

}  // namespace

/// What a television's flash lives on: how often each request makes it write for good.
class DiskFlushes : public ::testing::Test {
protected:
    DiskFlushes() {
        host.hub->watch(host.handler);
        host.handler->initializeSettings();
        host.hub->connected(host.client);
        // The first change of all also writes how the log of changes begins.
        flushesOf(setRequest("deviceName", "Attic"));
    }

    long flushesOf(const std::string& frame) {
        const long before = host.disk->flushes();
        host.hub->received(host.client, frame);
        return host.disk->flushes() - before;
    }

    Host host;
};

TEST_F(DiskFlushes, AreOneForEachAcceptedChange) {
    using Flushes = std::vector<std::pair<std::string, long>>;
    Flushes flushes;
    Flushes expected;
    const std::vector<std::pair<std::string, std::string>> changes{{"deviceName", "Den"},
                                                                   {"companionDevice", "Phone"},
                                                                   {"friendlyName", "Wohnzimmer"},
                                                                   {"tovanEntitlementStatus", "active"},
                                                                   {"orliaLocale", R"([\"fr-FR\"])"},
                                                                   {"timezone", "Europe/Paris"},
                                                                   {"handsFreeEnabled", "true"},
                                                                   {"handsFreeAlwaysOnEnabled", "true"},
                                                                   {"pttAlwaysOnEnabled", "true"},
                                                                   {"captionsStyles", std::string(3000, 'x')},
                                                                   {"a key of its own", "value"}};
    for (const auto& [key, value] : changes) {
        flushes.emplace_back(key, flushesOf(setRequest(key, value)));
        expected.emplace_back(key, 1);
    }
    EXPECT_EQ(flushes, expected);
}

TEST_F(DiskFlushes, AreFewMoreAtACheckpoint) {
    constexpr long changes = 600;
    long flushes = 0;
    long most = 0;
    for (long number = 0; number < changes; ++number) {
        const long count = flushesOf(setRequest("deviceName", "value " + std::to_string(number)));
        ASSERT_GE(count, 1) << number;
        flushes += count;
        most = std::max(most, count);
    }
    EXPECT_GT(most, 1) << "it was never moved";
    EXPECT_LE(static_cast<double>(flushes) / changes, 1.1);
}

TEST_F(DiskFlushes, DoNotHappenOtherwise) {
    const std::vector<std::string> requests{
        // unchanged
        setRequest("deviceName", "Attic"), setRequest("timezone", "America/Vancouver"),
        setRequest("handsFreeEnabled", "false"), setRequest("orliaLocale", R"([\"en-US\"])"),
        // older than the newest
        setRequest("deviceName", "Den", 1),
        // refused by the handler, or rejected
        setRequest("captionsEnabled", "true"), setRequest("doNotDisturbEnabled", "true"),
        setRequest("orliaLocale", "{}"), setRequest("another key", std::string(66000, 'x')),
        R"({"type":24,"payload":{"settingDBId":"deviceName","to":"Den"}})", R"({"type":24,"timestamp":9})",
        R"({"type":24,"timestamp":9,"payload":{"settingDBId":"deviceName","to":7}})",
        // refused by the transport
        "no JSON", R"({"type":8})", "\xff",
        // questions
        R"({"type":7,"messageId":"g","payload":{"settings":[]}})",
        R"({"type":7,"messageId":"g","payload":{"settings":["deviceName","timezone","never set"]}})",
        R"({"type":18,"messageId":"w"})"};
    std::vector<std::string> flushed;
    for (const auto& request : requests) {
        if (flushesOf(request) != 0) {
            flushed.push_back(request.substr(0, 100));
        }
    }
    EXPECT_EQ(flushed, std::vector<std::string>());
    host.metrics->text();
    host.storage.health();
    EXPECT_EQ(flushesOf(setRequest("deviceName", "Den", 10)), 1);
}

}  // namespace SettingsHost
