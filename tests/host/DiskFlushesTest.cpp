#include "WholeHost.h"

namespace SettingsHost {

namespace {

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

}  // namespace

/// What a television's flash lives on: how often each request makes it write for good.
class DiskFlushes : public ::testing::Test {
protected:
    DiskFlushes() {
        // The first change of all also writes how the log of changes begins.
        flushesOf(setRequest("deviceName", "Attic"));
    }

    long flushesOf(const std::string& frame) {
        const long before = host.disk->flushes();
        host.hub->received(host.client, frame);
        return host.disk->flushes() - before;
    }

    SettingsHostTests::LogRecording log;
    TestSupport::TemporaryDirectory folder;
    WholeHost host{folder / "settings.db", std::make_shared<SettingsHostTests::FaultyDisk>()};
};

TEST_F(DiskFlushes, AreOneForEachAcceptedChange) {
    using Flushes = std::vector<std::pair<std::string, long>>;
    Flushes flushes;
    Flushes expected;
    for (const auto& [key, value] : changes) {
        flushes.emplace_back(key, flushesOf(setRequest(key, value)));
        expected.emplace_back(key, 1);
    }
    EXPECT_EQ(flushes, expected);
}

TEST_F(DiskFlushes, AreOneForABatch) {
    std::vector<std::string> requests;
    requests.reserve(changes.size());
    for (const auto& [key, value] : changes) {
        requests.push_back(setRequest(key, value));
    }
    for (int number = 0; requests.size() < 15; ++number) {
        requests.push_back(setRequest("key " + std::to_string(number), "value"));
    }
    host.client->take();
    EXPECT_EQ(flushesOf(batchOf(requests)), 1);
    EXPECT_EQ(host.client->take().size(), 15U);
    EXPECT_EQ(flushesOf(batchOf(requests)), 0) << "nothing changes";
    EXPECT_EQ(flushesOf(batchOf({R"({"type":7,"messageId":"g","payload":{"settings":[]}})"})), 0);
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
