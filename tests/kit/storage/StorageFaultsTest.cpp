#include <map>

#include <sqlite3.h>

#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "kit/support/OpenStorage.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

namespace {

using Values = std::map<std::string, std::string>;

}  // namespace

/// Repeats the same run of a storage with a fault at a different call each time.
class StorageFaultsTest : public ::testing::Test {
protected:
    struct Run {
        std::string file;
        bool opened = false;
        /// The values to be found: of all changes that returned true and no others.
        Values expected;
        int refused = 0;
        std::vector<std::string> lines;
    };

    void expectStored(const Run& result) {
        Storage storage(result.file, disk);
        for (const std::string key : {"a", "b", "c", "d", "large"}) {
            std::string value;
            storage.getValue(key, value);
            const auto entry = result.expected.find(key);
            EXPECT_TRUE(value == (entry == result.expected.end() ? "" : entry->second)) << key << " " << value.size();
        }
    }

    /// `arm` sets the fault.
    Run run(const std::function<void()>& arm) {
        folder = std::make_unique<TestSupport::TemporaryDirectory>();
        Run result;
        result.file = *folder / "settings.db";
        prepare(result);
        arm();
        try {
            Storage storage(result.file, disk);
            result.opened = true;
            EXPECT_EQ(storage.recovery().source, Recovery::Source::NOT_NEEDED) << "a good database was set aside";
            change(storage, result);
            faultHappened = disk->hasFailed();
            disk->work();
            // After the fault the storage works again.
            EXPECT_TRUE(storage.setValue("d", "after the fault"));
            result.expected["d"] = "after the fault";
        } catch (const DatabaseError&) {
            faultHappened = disk->hasFailed();
            disk->work();
        }
        result.lines = log.take();
        return result;
    }

    /// The number of calls of a run without faults.
    long countCalls() {
        long calls = 0;
        folder = std::make_unique<TestSupport::TemporaryDirectory>();
        Run result;
        result.file = *folder / "settings.db";
        prepare(result);
        disk->work();
        {
            Storage storage(result.file, disk);
            change(storage, result);
            calls = disk->calls();
        }
        EXPECT_EQ(result.refused, 0);
        expectStored(result);
        return calls;
    }

    SettingsHostTests::LogRecording log;
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    std::unique_ptr<TestSupport::TemporaryDirectory> folder;
    bool faultHappened = false;

private:
    /// An earlier process that was killed: its last changes are in the write-ahead log.
    void prepare(Run& result) {
        SettingsHostTests::OpenStorage storage(result.file, disk);
        sqlite3_db_config(storage.database().handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        storage.setValue("a", "1");
        storage.setValue("b", "2");
        storage.setValue("large", std::string(60000, 'w'));
        result.expected = {{"a", "1"}, {"b", "2"}, {"large", std::string(60000, 'w')}};
    }

    static void set(Storage& storage, Run& result, const std::string& key, const std::string& value) {
        if (storage.setValue(key, value)) {
            result.expected[key] = value;
        } else {
            ++result.refused;
        }
    }

    static void change(Storage& storage, Run& result) {
        set(storage, result, "a", "changed");
        set(storage, result, "c", "3");
        if (storage.removeValue("b")) {
            result.expected.erase("b");
        } else {
            ++result.refused;
        }
        // Large enough for a checkpoint in between.
        for (const char filling : {'x', 'y', 'z'}) {
            set(storage, result, "large", std::string(60000, filling) + "1");
            set(storage, result, "large", std::string(60000, filling) + "2");
        }
        set(storage, result, "c", "4");
    }
};

TEST_F(StorageFaultsTest, AnErrorAtAnyCallLosesNothingThatWasAnswered) {
    const long calls = countCalls();
    int refused = 0;
    int notOpened = 0;
    for (long call = 1; call <= calls; ++call) {
        SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(calls));
        const Run result = run([&] { disk->failOnce(call); });
        EXPECT_TRUE(faultHappened);
        EXPECT_EQ(result.lines.size(), static_cast<std::size_t>(result.refused)) << "each refusal is logged once";
        for (const auto& line : result.lines) {
            EXPECT_EQ(line.rfind("3 settings-host:cannot ", 0), 0U) << line;
        }
        expectStored(result);
        ASSERT_FALSE(HasFailure());
        refused += result.refused;
        notOpened += result.opened ? 0 : 1;
    }
    EXPECT_GT(refused, 10);
    EXPECT_GT(notOpened, 10);
}

TEST_F(StorageFaultsTest, ADiskThatFailsForGoodLosesNothingThatWasAnswered) {
    const long calls = countCalls();
    for (long call = 1; call <= calls; call += 3) {
        SCOPED_TRACE("from call " + std::to_string(call) + " of " + std::to_string(calls));
        const Run result = run([&] { disk->failFrom(call); });
        EXPECT_TRUE(faultHappened);
        expectStored(result);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(StorageFaultsTest, AFullDiskRefusesChangesUntilThereIsRoom) {
    const long calls = countCalls();
    int refused = 0;
    for (long call = 1; call <= calls; ++call) {
        SCOPED_TRACE("full from call " + std::to_string(call) + " of " + std::to_string(calls));
        const Run result = run([&] { disk->fillUpFrom(call); });
        EXPECT_TRUE(result.opened) << "what is stored can be read";
        for (const auto& line : result.lines) {
            EXPECT_NE(line.find("database or disk is full"), std::string::npos) << line;
        }
        EXPECT_EQ(result.lines.size(), static_cast<std::size_t>(result.refused));
        expectStored(result);
        ASSERT_FALSE(HasFailure());
        refused += result.refused;
    }
    EXPECT_GT(refused, 10);
}

TEST_F(StorageFaultsTest, AnErrorWhileReadingAnswersNothingAndChangesNothing) {
    const Run result = run([&] { disk->work(); });
    SettingsHostTests::OpenStorage storage(result.file, disk);
    storage.database().execute("PRAGMA shrink_memory");
    disk->failFrom(1);
    std::string value = "left over";
    storage.getValue("large", value);
    EXPECT_EQ(value, "");
    EXPECT_TRUE(disk->hasFailed());
    EXPECT_EQ(log.take(), std::vector<std::string>{"3 settings-host:cannot read 'large': database: disk I/O error"});
    EXPECT_TRUE(storage.health().writable) << "reading says nothing about writing";
    disk->work();
    storage.getValue("large", value);
    EXPECT_EQ(value.size(), 60001U);
}

}  // namespace SettingsHandlerKit
