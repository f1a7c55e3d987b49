#include <filesystem>
#include <fstream>
#include <iomanip>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CommunicationHandler/MessageType.h"
#include "SettingsHandlerTesting/Actions.h"
#include "SettingsHandlerTesting/AdversarialObservers.h"
#include "SettingsHandlerTesting/Gate.h"
#include "SettingsHandlerTesting/Mocks.h"
#include "SettingsHandlerTesting/TestHandler.h"
#include "SettingsHandlerTesting/contracts/StorageContract.h"
#include "SettingsHandlerTesting/platform/PlatformDoubles.h"

using namespace SettingsHandlerTesting;

using Entries = std::vector<std::string>;

TEST(FirstTest, StoresAName) {
    TestHandler handler;
    EXPECT_TRUE(handler->setSetting("deviceName", "Den"));
    EXPECT_EQ(handler.storage.stored("deviceName"), "Den");
}

TEST(Journal, HasEverythingThatAChangeDoes) {
    TestHandler handler;
    handler->setSetting("deviceName", "Den");
    EXPECT_EQ(handler.journal.take(),
              (Entries{"storage.setValue(deviceName, Den)",
                       R"(transport.sendMessage(25, {"settingDBId":"deviceName","from":"TV","to":"Den"}))",
                       "metrics.recordCounter(deviceName_Den, 0, 1, 1)",
                       "metrics.recordEvent(app_events, AUTO, interaction_name=deviceName_Den)"}));

    EXPECT_FALSE(handler->setSetting("deviceName", "Den"));
    EXPECT_EQ(handler.journal.take(), Entries{}) << "writing the same value again changes nothing";
}

TEST(Requests, ChangeAndRead) {
    TestHandler handler;
    auto& pages = *handler.transport;
    pages.request(CommunicationHandler::SET_SETTINGS, changePayload("deviceName", "Den"));
    EXPECT_EQ(pages.request(CommunicationHandler::GET_SETTINGS, settingsPayload({"deviceName", "captionsFontSize"})),
              R"({"settings":{"captionsFontSize":"FONT_MEDIUM","deviceName":"Den"}})");
    EXPECT_EQ(pages.takeEvents(),
              (std::vector<SentMessage>{{CommunicationHandler::SETTING_CHANGED, "event-1",
                                         R"({"settingDBId":"deviceName","from":"TV","to":"Den"})"}}));
}

TEST(Requests, GoUnansweredWithoutAMessageId) {
    TestHandler handler;
    handler.transport->deliver(CommunicationHandler::GET_SETTINGS, R"({"payload":{"settings":[]}})");
    EXPECT_EQ(handler.journal.take(), Entries{});
}

TEST(Arrangement, OfFakesAndAMock) {
    const auto launcher = std::make_shared<testing::StrictMock<MockAppLaunch>>();
    TestHandler handler([&](TestHandler& around) {
        around.storage.put("deviceName", "Living room");
        around.deviceInfo->switchMode(handsFreeMode, true);
        around.used.appLaunch = launcher;
    });
    EXPECT_EQ(handler->getSettings({"deviceName"}).at("deviceName"), "Living room");
    EXPECT_EQ(handler.sdkBridge->applied.at("handsFreeEnabled"), "true");

    EXPECT_CALL(*launcher, launchApp("settings-app", ""));
    handler.transport->request(CommunicationHandler::OPEN_VA_SETTINGS);
}

TEST(FailingStorage, KeepsTheOldValue) {
    TestHandler handler;
    handler.storage.refusedKeys = {"deviceName"};
    RecordingLog log;
    EXPECT_FALSE(handler->setSetting("deviceName", "Den"));
    EXPECT_EQ(handler.journal.take(), Entries{"storage.setValue(deviceName, Den)"});
    EXPECT_EQ(handler->getSettings({"deviceName"}).at("deviceName"), "TV");
    EXPECT_EQ(
        log.take(VessaLogger::ERROR),
        (std::vector<LogLine>{{3, "SettingsHandler:deviceName new value: 'Den' value was not written properly"}}));
}

TEST(FailingStorage, MayThrow) {
    TestHandler handler;
    handler.journal.at("storage.setValue(deviceName", throwing("the disk is gone"));
    EXPECT_THROW(handler->setSetting("deviceName", "Den"), std::runtime_error);
    EXPECT_TRUE(handler->setSetting("deviceName", "Den")) << "the next write works again";
    EXPECT_TRUE(handler.journal.allActionsRun());
}

TEST(Device, SwitchesLocaleAndHandsFree) {
    TestHandler handler;
    handler.deviceLayer.changeLocale("fr-FR");
    EXPECT_EQ(handler.journal.take(), (Entries{"sdk.getLocales()", "sdk.setLocales(fr-FR)"}));

    handler.deviceLayer.switchHandsFree(true);
    EXPECT_EQ(handler.transport->takeEvents().at(0).payload,
              R"({"settingDBId":"handsFreeEnabled","from":"false","to":"true"})");
}

TEST(Log, StandsBetweenTheCalls) {
    TestHandler handler;
    const PlatformRecording recording(handler.journal);
    handler->setSetting("deviceName", "Den");
    const Entries entries = handler.journal.take();
    EXPECT_EQ(Entries(entries.begin(), entries.begin() + 3),
              (Entries{"log 0 SettingsHandler:setSetting", "log 0 SettingsHandler:SettingDBId: deviceName",
                       "storage.setValue(deviceName, Den)"}));
}

TEST(Observers, OneThatThrowsKeepsTheEventBack) {
    TestHandler handler;
    handler->addFriendlyNameObserver(std::make_shared<Thrower<FakeFriendlyNameObserver>>(handler.journal));
    EXPECT_THROW(handler->setSetting("friendlyName", "Den"), std::runtime_error);
    EXPECT_EQ(handler.journal.take(), (Entries{"sdk.applySetting(friendlyName, Den)", "observer.friendlyName(Den)"}));
    EXPECT_EQ(handler.storage.stored("friendlyName"), "Den");
}

TEST(Observers, OneThatRemovesItselfIsToldOnce) {
    TestHandler handler;
    handler->addFriendlyNameObserver(
        std::make_shared<SelfRemover<FakeFriendlyNameObserver>>(handler.journal, *handler.handler));
    handler->setSetting("friendlyName", "Den");
    handler->setSetting("friendlyName", "Attic");
    int told = 0;
    for (const auto& entry : handler.journal.take()) {
        told += entry.rfind("observer.", 0) == 0 ? 1 : 0;
    }
    EXPECT_EQ(told, 1);
}

class FileStorage : public SDKWrapper::StorageManagerInterface {
public:
    explicit FileStorage(std::filesystem::path path) : file(std::move(path)) {
        std::ifstream in(file, std::ios::binary);
        for (std::string key, value; in >> std::quoted(key) >> std::quoted(value);) {
            values[key] = value;
        }
    }

    void getValue(const std::string& key, std::string& value) override {
        const auto entry = values.find(key);
        value = entry == values.end() ? "" : entry->second;
    }
    bool setValue(const std::string& key, const std::string& value) override {
        auto changed = values;
        changed[key] = value;
        return save(std::move(changed));
    }
    bool removeValue(const std::string& key) override {
        auto changed = values;
        changed.erase(key);
        return save(std::move(changed));
    }
    bool clearStorage() override { return save({}); }

private:
    bool save(std::map<std::string, std::string> changed) {
        const std::filesystem::path fresh = file.string() + ".new";
        std::ofstream out(fresh, std::ios::binary);
        for (const auto& [key, value] : changed) {
            out << std::quoted(key) << ' ' << std::quoted(value) << '\n';
        }
        out.close();
        std::error_code failure;
        if (out) {
            std::filesystem::rename(fresh, file, failure);
        }
        if (!out || failure) {
            return false;
        }
        values = std::move(changed);
        return true;
    }

    std::filesystem::path file;
    std::map<std::string, std::string> values;
};

/// A path in the temporary folder, of this test alone, without a file at first and at last.
struct FreshPath {
    std::filesystem::path path =
        std::filesystem::path(testing::TempDir()) / testing::UnitTest::GetInstance()->current_test_info()->name();
    FreshPath() { std::filesystem::remove(path); }
    ~FreshPath() { std::filesystem::remove(path); }
};

struct FileStorageMaker {
    FreshPath file;
    FileStorage own{file.path};
    SDKWrapper::StorageManagerInterface& storage() { return own; }
    void reopen() { own = FileStorage(file.path); }
};
INSTANTIATE_TYPED_TEST_SUITE_P(FileStorage, StorageContract, FileStorageMaker, NumberedNames);

TEST(OwnStorage, KeepsTheNameOverARestart) {
    const FreshPath file;
    for (const std::string expected : {"TV", "Den"}) {
        FileStorage storage(file.path);
        TestHandler handler([&](TestHandler& around) { around.used.storage = &storage; });
        EXPECT_EQ(handler->getSettings({"deviceName"}).at("deviceName"), expected);
        handler->setSetting("deviceName", "Den");
    }
}

TEST(Threads, ASlowStorageHoldsNoReaderUp) {
    TestHandler handler;
    Gate gate;
    handler.journal.at("storage.setValue(deviceName", gate.holding());
    std::thread writer([&] { handler->setSetting("deviceName", "Den"); });
    gate.awaitArrival();
    EXPECT_EQ(handler->getCurrentSettingsMap().at("deviceName"), "TV") << "the write is not done yet";
    gate.open();
    writer.join();
    EXPECT_EQ(handler->getCurrentSettingsMap().at("deviceName"), "Den");
}
