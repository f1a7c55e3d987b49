#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "SettingsHandler/SettingsHandler.h"
#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeObservers.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/FakeStorage.h"
#include "SettingsHandlerTesting/FakeTransport.h"
#include "SettingsHandlerTesting/Journal.h"
#include "SettingsHandlerTesting/platform/PlatformDoubles.h"
#include "Wire/Catalogue.h"

namespace SettingsHandlerTests {

using Entries = std::vector<std::string>;
using Values = std::map<std::string, std::string>;

/// The handler with public access to its protected operations.
class OpenHandler : public SettingsHandler::SettingsHandler {
public:
    using SettingsHandler::emitSettingMetric;
    using SettingsHandler::getSDKSetting;
    using SettingsHandler::isOrliaSelectedAsVA;
    using SettingsHandler::isSDKSetting;
    using SettingsHandler::onEntitlementStatusChanged;
    using SettingsHandler::onFriendlyNameChanged;
    using SettingsHandler::onOrliaLocaleChange;
    using SettingsHandler::openVASettings;
    using SettingsHandler::settingChanged;
    using SettingsHandler::SettingsHandler;
    using SettingsHandler::stringifyVector;
};

/// A handler among fakes that share one journal. The journal is empty when a test starts.
class HandlerTest : public ::testing::Test {
protected:
    HandlerTest() : HandlerTest(nullptr) {}

    explicit HandlerTest(std::shared_ptr<SettingsHandlerTesting::FakeTransport> otherTransport)
        : transport(otherTransport ? std::move(otherTransport)
                                   : std::make_shared<SettingsHandlerTesting::FakeTransport>(journal)) {
        handler = make<OpenHandler>();
        journal.take();
    }

    template <typename Handler>
    std::shared_ptr<Handler> make() {
        return std::make_shared<Handler>(transport, storage, metrics, sdk, app, device);
    }

    /// The journal so far holds exactly `expected`.
    void expectJournal(const Entries& expected, int line = __builtin_LINE()) {
        SCOPED_TRACE("expected at line " + std::to_string(line));
        EXPECT_EQ(journal.take(), expected);
    }

    void TearDown() override { EXPECT_TRUE(journal.allActionsRun()); }

    /// The cached value of `key`, or "(none)".
    std::string cached(const std::string& key) {
        auto map = handler->getCurrentSettingsMap();
        journal.take();
        const auto entry = map.find(key);
        return entry == map.end() ? "(none)" : entry->second;
    }

    /// Puts a value into the cache by a change, and empties the journal.
    void cache(const std::string& key, const std::string& value) {
        std::string old;
        handler->settingChanged(key, old, value);
        journal.take();
    }

    void deliver(int type, const std::string& text) { transport->deliver(type, text); }

    /// The values of a new device: the defaults of the catalogue, and the values of the fakes.
    static Values initialValues() {
        Values values{{"orliaLocale", R"(["en-US"])"},
                      {"captionsEnabled", "false"},
                      {"doNotDisturbEnabled", "false"},
                      {"timezone", "America/Vancouver"}};
        for (const auto& setting : Wire::catalogue()) {
            if (setting.defaultValue) {
                values.emplace(setting.key, *setting.defaultValue);
            }
        }
        return values;
    }

    /// The journal of reading all settings, in the order of the library's table.
    Entries readOfAll() const {
        Entries entries{"log 0 SettingsHandler:getSettings"};
        for (const auto& [type, key] : ::SettingsHandler::SettingsNamesTypeToStringMapping) {
            entries.push_back("log 0 SettingsHandler:SettingDBId: " + key);
            const auto call = ownerCalls().find(type);
            if (call != ownerCalls().end()) {
                entries.push_back(call->second);
                continue;
            }
            entries.push_back("storage.getValue(" + key + ")");
            const auto stored = storage.values.find(key);
            if (stored == storage.values.end() || stored->second.empty()) {
                entries.push_back(Wire::findSetting(key)->defaultValue
                                      ? "log 1 SettingsHandler:Default value retrieved for " + key
                                      : "log 3 SettingsHandler:Default value was not found for " + key);
            }
        }
        return entries;
    }

    /// The journal of a change as `settingChanged` makes it.
    static Entries changed(const std::string& key, const std::string& fromJson, const std::string& toJson,
                           const std::string& to) {
        return {R"(transport.sendMessage(25, {"settingDBId":")" + key + R"(","from":")" + fromJson + R"(","to":")" +
                    toJson + R"("}))",
                "metrics.recordCounter(" + key + "_" + to + ", 0, 1, 1)",
                "metrics.recordEvent(app_events, AUTO, interaction_name=" + key + "_" + to + ")"};
    }
    static Entries changed(const std::string& key, const std::string& from, const std::string& to) {
        return changed(key, from, to, to);
    }

    SettingsHandlerTesting::Journal journal;
    SettingsHandlerTesting::PlatformRecording recording{journal};
    std::shared_ptr<SettingsHandlerTesting::FakeTransport> transport;
    SettingsHandlerTesting::FakeStorage storage{journal};
    std::shared_ptr<SettingsHandlerTesting::FakeMetrics> metrics =
        std::make_shared<SettingsHandlerTesting::FakeMetrics>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeSdkBridge> sdk =
        std::make_shared<SettingsHandlerTesting::FakeSdkBridge>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeAppLaunch> app =
        std::make_shared<SettingsHandlerTesting::FakeAppLaunch>(journal);
    std::shared_ptr<SettingsHandlerTesting::FakeDeviceInfo> device =
        std::make_shared<SettingsHandlerTesting::FakeDeviceInfo>(journal);
    std::shared_ptr<OpenHandler> handler;

private:
    /// The call that reads each setting that is not in the storage.
    static const std::map<int, std::string>& ownerCalls() {
        static const std::map<int, std::string> calls{
            {::SettingsHandler::ORLIA_LOCALE, "sdk.getLocales()"},
            {::SettingsHandler::CAPTIONS_ENABLED, "sdk.isCaptionsEnabled()"},
            {::SettingsHandler::DO_NOT_DISTURB_ENABLED, "sdk.isDoNotDisturbEnabled()"},
            {::SettingsHandler::TIMEZONE, "sdk.getTimezone()"},
            {::SettingsHandler::HANDS_FREE_ENABLED, "device.getDeviceInfo()"},
            {::SettingsHandler::HANDS_FREE_ALWAYS_ON_ENABLED, "device.getDeviceInfo()"},
            {::SettingsHandler::PTT_ALWAYS_ON_ENABLED, "device.getDeviceInfo()"},
        };
        return calls;
    }
};

/// Concatenates entries.
inline Entries operator+(Entries first, const Entries& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// The first two lines of every setSetting.
inline Entries writeOf(const std::string& key) {
    return {"log 0 SettingsHandler:setSetting", "log 0 SettingsHandler:SettingDBId: " + key};
}

}  // namespace SettingsHandlerTests
