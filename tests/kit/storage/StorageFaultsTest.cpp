#include <sqlite3.h>

#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "kit/support/StorageRecording.h"
#include "kit/support/ValueRecording.h"
#include "storage/Database.h"
#include "storage/SqliteStorage.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHost {

namespace {

using Values = std::map<std::string, std::string>;

}  // namespace

/// Runs the same short life of a storage again and again, with a fault at another call each time.
class StorageFaultsTest : public ::testing::Test {
protected:
    struct Life {
        std::string file;
        bool opened = false;
        /// What must be there: every change that was answered with true, and none that was not.
        Values expected;
        int refused = 0;
        std::vector<std::string> lines;
    };

    void expectStored(const Life& life) {
        Database database(life.file);
        SqliteStorage storage(database, values, recording);
        for (const std::string key : {"a", "b", "c", "d", "large"}) {
            std::string value;
            storage.getValue(key, value);
            const auto entry = life.expected.find(key);
            EXPECT_TRUE(value == (entry == life.expected.end() ? "" : entry->second)) << key << " " << value.size();
        }
    }

    /// With the fault that `arm` brings about.
    Life live(const std::function<void()>& arm) {
        folder = std::make_unique<TestSupport::TemporaryDirectory>();
        Life life;
        life.file = *folder / "settings.db";
        prepare(life);
        arm();
        try {
            Database database(life.file);
            SqliteStorage storage(database, values, recording);
            life.opened = true;
            change(storage, life);
            faultHappened = disk.hasFailed();
            disk.work();
            // One fault does not spoil what comes after it.
            EXPECT_TRUE(storage.setValue("d", "after the fault"));
            life.expected["d"] = "after the fault";
        } catch (const DamagedDatabase& error) {
            ADD_FAILURE() << "a good database would be set aside: " << error.what();
        } catch (const DatabaseError&) {
            faultHappened = disk.hasFailed();
            disk.work();
        }
        life.lines = log.take();
        return life;
    }

    /// How many calls a life without faults makes.
    long countCalls() {
        long calls = 0;
        folder = std::make_unique<TestSupport::TemporaryDirectory>();
        Life life;
        life.file = *folder / "settings.db";
        prepare(life);
        disk.work();
        {
            Database database(life.file);
            SqliteStorage storage(database, values, recording);
            change(storage, life);
            calls = disk.calls();
        }
        EXPECT_EQ(life.refused, 0);
        expectStored(life);
        return calls;
    }

    SettingsHostTests::LogRecording log;
    SettingsHostTests::StorageRecording recording;
    std::shared_ptr<SettingsHostTests::ValueRecording> values = std::make_shared<SettingsHostTests::ValueRecording>();
    SettingsHostTests::FaultyDisk disk;
    std::unique_ptr<TestSupport::TemporaryDirectory> folder;
    bool faultHappened = false;

private:
    /// An earlier run that was killed: its last changes are in the write-ahead log.
    void prepare(Life& life) {
        Database database(life.file);
        sqlite3_db_config(database.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        SqliteStorage storage(database, values, recording);
        storage.setValue("a", "1");
        storage.setValue("b", "2");
        storage.setValue("large", std::string(60000, 'w'));
        life.expected = {{"a", "1"}, {"b", "2"}, {"large", std::string(60000, 'w')}};
    }

    static void set(SqliteStorage& storage, Life& life, const std::string& key, const std::string& value) {
        if (storage.setValue(key, value)) {
            life.expected[key] = value;
        } else {
            ++life.refused;
        }
    }

    static void change(SqliteStorage& storage, Life& life) {
        set(storage, life, "a", "changed");
        set(storage, life, "c", "3");
        if (storage.removeValue("b")) {
            life.expected.erase("b");
        } else {
            ++life.refused;
        }
        // Large enough for the log to be moved into the database on the way.
        for (const char filling : {'x', 'y', 'z'}) {
            set(storage, life, "large", std::string(60000, filling) + "1");
            set(storage, life, "large", std::string(60000, filling) + "2");
        }
        set(storage, life, "c", "4");
    }
};

TEST_F(StorageFaultsTest, AnErrorAtAnyCallLosesNothingThatWasAnswered) {
    const long calls = countCalls();
    int refused = 0;
    int notOpened = 0;
    for (long call = 1; call <= calls; ++call) {
        SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(calls));
        const Life life = live([&] { disk.failOnce(call); });
        EXPECT_TRUE(faultHappened);
        EXPECT_EQ(life.lines.size(), static_cast<std::size_t>(life.refused)) << "each refusal is logged once";
        for (const auto& line : life.lines) {
            EXPECT_EQ(line.rfind("3 settings-host:cannot ", 0), 0U) << line;
        }
        expectStored(life);
        ASSERT_FALSE(HasFailure());
        refused += life.refused;
        notOpened += life.opened ? 0 : 1;
    }
    EXPECT_GT(refused, 10);
    EXPECT_GT(notOpened, 10);
}

TEST_F(StorageFaultsTest, ADiskThatFailsForGoodLosesNothingThatWasAnswered) {
    const long calls = countCalls();
    for (long call = 1; call <= calls; call += 3) {
        SCOPED_TRACE("from call " + std::to_string(call) + " of " + std::to_string(calls));
        const Life life = live([&] { disk.failFrom(call); });
        EXPECT_TRUE(faultHappened);
        expectStored(life);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(StorageFaultsTest, AFullDiskRefusesChangesUntilThereIsRoom) {
    const long calls = countCalls();
    int refused = 0;
    for (long call = 1; call <= calls; ++call) {
        SCOPED_TRACE("full from call " + std::to_string(call) + " of " + std::to_string(calls));
        const Life life = live([&] { disk.fillUpFrom(call); });
        EXPECT_TRUE(life.opened) << "what is stored can be read";
        for (const auto& line : life.lines) {
            EXPECT_NE(line.find("database or disk is full"), std::string::npos) << line;
        }
        EXPECT_EQ(life.lines.size(), static_cast<std::size_t>(life.refused));
        expectStored(life);
        ASSERT_FALSE(HasFailure());
        refused += life.refused;
    }
    EXPECT_GT(refused, 10);
}

TEST_F(StorageFaultsTest, AnErrorWhileReadingAnswersNothingAndChangesNothing) {
    const Life life = live([&] { disk.work(); });
    Database database(life.file);
    SqliteStorage storage(database, values, recording);
    database.execute("PRAGMA shrink_memory");
    disk.failFrom(1);
    std::string value = "left over";
    storage.getValue("large", value);
    EXPECT_EQ(value, "");
    EXPECT_TRUE(disk.hasFailed());
    EXPECT_EQ(log.take(), std::vector<std::string>{"3 settings-host:cannot read 'large': database: disk I/O error"});
    EXPECT_TRUE(storage.health().writable) << "reading says nothing about writing";
    disk.work();
    storage.getValue("large", value);
    EXPECT_EQ(value.size(), 60001U);
}

}  // namespace SettingsHost
