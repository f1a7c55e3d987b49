#include <stdexcept>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "SettingsHandlerTesting/FakeDevice.h"
#include "SettingsHandlerTesting/FakeMetrics.h"
#include "SettingsHandlerTesting/FakeObservers.h"
#include "SettingsHandlerTesting/FakeSdkBridge.h"
#include "SettingsHandlerTesting/kit/FakeClient.h"
#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "kit/support/OpenStorage.h"
#include "kit/support/TrafficRecording.h"
#include "server/StoredTransactions.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

using namespace SettingsHandlerTesting;

class StoredTransactionsTest : public ::testing::Test {
protected:
    using Lines = std::vector<std::string>;

    StoredTransactionsTest() {
        transactions->watch(storage);
        transactions->watch(handler);
        transactions->onRollBack([this] { journal.add("rolled back"); });
        handler->addFriendlyNameObserver(std::make_shared<FakeFriendlyNameObserver>(journal));
        handler->initializeSettings();
        hub->connected(client);
        EXPECT_TRUE(storage.setValue("friendlyName", "Kitchen"));
        take();
        log.take();
    }

    /// What the service's owners and the handler's observers were told.
    Lines take() {
        Lines found;
        for (const auto& entry : journal.take()) {
            if (entry == "rolled back" || entry.rfind("observer.", 0) == 0) {
                found.push_back(entry);
            }
        }
        return found;
    }

    /// A batch whose flush fails.
    void failToCommit(const std::function<void()>& changes, bool forGood = false) {
        transactions->begin();
        changes();
        if (forGood) {
            disk->failFrom(1);
        } else {
            disk->failOnce(1);
        }
        EXPECT_FALSE(transactions->commit());
    }

    void runLater() {
        for (const auto& action : std::exchange(waiting, {})) {
            action();
        }
    }

    std::string read(const std::string& key) {
        std::string value;
        storage.getValue(key, value);
        return value;
    }

    SettingsHostTests::LogRecording log;
    TestSupport::TemporaryDirectory folder;
    Journal journal;
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    std::shared_ptr<MessageHub> hub = std::make_shared<MessageHub>(std::make_shared<TrafficRecording>());
    std::vector<std::function<void()>> waiting;
    std::shared_ptr<StoredTransactions> transactions = std::make_shared<StoredTransactions>(
        *hub, [this](std::function<void()> action) { waiting.push_back(std::move(action)); });
    SettingsHostTests::OpenStorage storage{folder / "settings.db", disk};
    std::shared_ptr<CheckedSettingsHandler> handler = CheckedSettingsHandler::create(
        hub, storage, std::make_shared<FakeMetrics>(journal), std::make_shared<FakeSdkBridge>(journal),
        std::make_shared<FakeAppLaunch>(journal), std::make_shared<FakeDeviceInfo>(journal));
    std::shared_ptr<FakeClient> client = std::make_shared<FakeClient>();
};

TEST_F(StoredTransactionsTest, ACommittedBatchIsStored) {
    transactions->begin();
    handler->setSetting("deviceName", "Den");
    EXPECT_TRUE(transactions->commit());
    EXPECT_EQ(read("deviceName"), "Den");
    EXPECT_EQ(take(), Lines{});
}

TEST_F(StoredTransactionsTest, AfterARollBackTheServiceReadsItsStateAndThenTheHandlerStartsOver) {
    failToCommit([this] { handler->setSetting("deviceName", "Den"); });
    transactions->restore({"deviceName", "friendlyName"});
    EXPECT_EQ(take(), (Lines{"rolled back", "observer.friendlyName(Kitchen)"}));
    EXPECT_EQ(handler->getCurrentSettingsMap().at("deviceName"), "TV");
    EXPECT_EQ(read("deviceName"), "");
    read("deviceName");
    EXPECT_TRUE(waiting.empty());
}

TEST_F(StoredTransactionsTest, WaitsForAStorageThatCannotBeRead) {
    failToCommit([this] { handler->setSetting("deviceName", "Den"); }, true);
    log.take();
    transactions->restore({"friendlyName"});
    EXPECT_EQ(log.take(),
              Lines{"3 settings-host:cannot read the storage: until it can be read, some settings keep values of "
                    "a rolled-back batch"});
    EXPECT_EQ(take(), Lines{}) << "nobody is told a default in place of a value";
    read("deviceName");
    EXPECT_TRUE(waiting.empty());

    disk->work();
    read("deviceName");
    read("deviceName");
    EXPECT_EQ(waiting.size(), 1U);
    sqlite3_db_release_memory(storage.database().handle());
    disk->failFrom(1);
    runLater();
    EXPECT_EQ(take(), Lines{}) << "it cannot be read again";

    disk->work();
    client->take();
    read("deviceName");
    runLater();
    EXPECT_EQ(take(), (Lines{"rolled back", "observer.friendlyName(Kitchen)"}));
    EXPECT_EQ(handler->getCurrentSettingsMap().at("deviceName"), "TV");
    EXPECT_EQ(client->take(), Lines{R"({"notice":{"reread":["friendlyName"]}})"});
    read("deviceName");
    EXPECT_TRUE(waiting.empty()) << "once";
}

TEST_F(StoredTransactionsTest, ALaterRollBackAlsoTellsOfTheOneThatWaits) {
    failToCommit([this] { storage.setValue("friendlyName", "Den"); }, true);
    transactions->restore({"friendlyName"});
    disk->work();
    failToCommit([this] { handler->setSetting("deviceName", "Den"); });
    transactions->restore({"deviceName"});
    EXPECT_EQ(take(), (Lines{"rolled back", "observer.friendlyName(Kitchen)"}));
    runLater();
    EXPECT_EQ(take(), Lines{});
}

TEST_F(StoredTransactionsTest, AnExceptionIsLoggedAndTheRestIsDone) {
    transactions->onRollBack([] { throw std::runtime_error("it rains"); });
    transactions->onRollBack([this] { journal.add("observer.last"); });
    failToCommit([this] { handler->setSetting("deviceName", "Den"); });
    log.take();
    transactions->restore({"friendlyName"});
    EXPECT_EQ(take(), (Lines{"rolled back", "observer.last", "observer.friendlyName(Kitchen)"}));
    EXPECT_EQ(log.take().front(),
              "3 settings-host:cannot read all settings again after a batch was rolled back: it rains");
}

TEST_F(StoredTransactionsTest, NeedNoHandlerAndMayBeGoneBeforeTheStorage) {
    handler.reset();
    failToCommit([this] { storage.setValue("deviceName", "Den"); }, true);
    transactions->restore({"deviceName"});
    disk->work();
    read("deviceName");
    transactions.reset();
    runLater();
    read("deviceName");
    EXPECT_EQ(take(), Lines{});
}

}  // namespace SettingsHandlerKit
