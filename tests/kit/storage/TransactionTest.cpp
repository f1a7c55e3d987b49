#include <map>
#include <random>

#include <sqlite3.h>

#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "kit/support/OpenStorage.h"
#include "kit/support/StorageRecording.h"
#include "support/Sanitizers.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

namespace {

const std::vector<std::string> keys{"a", "b", "c", "d", "large"};

}  // namespace

class TransactionTest : public ::testing::Test {
protected:
    using Values = std::map<std::string, std::string>;
    using Lines = std::vector<std::string>;

    TransactionTest() { open(); }

    void open() {
        state.reset();
        storage.reset();
        storage = std::make_unique<SettingsHostTests::OpenStorage>(file, disk);
        storage->observe(recording);
        state = storage->state("simulation");
    }

    /// Settings and state.
    Values stored() {
        Values values;
        for (const auto& key : keys) {
            values[key] = storage->get(key);
            values["state of " + key] = state->load(key).value_or("");
        }
        recording->take();
        return values;
    }

    /// Changes settings and state within one transaction. Large enough for a checkpoint now and then.
    bool transact(char filling) {
        const std::string value(1, filling);
        storage->beginTransaction();
        storage->setValue("a", value);
        state->save("a", value);
        storage->removeValue("b");
        storage->setValue("large", std::string(60000, filling));
        storage->setAside("c");
        state->save("b", value);
        storage->setValue("c", value);
        return storage->commitTransaction();
    }

    void fill() {
        for (const auto& key : keys) {
            EXPECT_TRUE(storage->setValue(key, "old " + key));
            EXPECT_TRUE(state->save(key, "old state of " + key));
        }
        recording->take();
    }

    static Values after(Values values, char filling) {
        const std::string value(1, filling);
        values["a"] = values["c"] = values["state of a"] = values["state of b"] = value;
        values["b"] = "";
        values["large"] = std::string(60000, filling);
        return values;
    }

    SettingsHostTests::LogRecording log;
    TestSupport::TemporaryDirectory folder{TestSupport::memoryFolder()};
    std::string file = folder / "settings.db";
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    std::shared_ptr<SettingsHostTests::StorageRecording> recording =
        std::make_shared<SettingsHostTests::StorageRecording>();
    std::unique_ptr<SettingsHostTests::OpenStorage> storage;
    std::unique_ptr<StateStore> state;
};

TEST_F(TransactionTest, CommitsSettingsAndStateWithOneFlush) {
    fill();
    const Values before = stored();
    const long flushes = disk->flushes();
    EXPECT_TRUE(transact('n'));
    EXPECT_EQ(disk->flushes() - flushes, 1);
    EXPECT_TRUE(stored() == after(before, 'n'));
    open();
    EXPECT_TRUE(stored() == after(before, 'n'));
    EXPECT_EQ(log.take(), Lines{});
}

TEST_F(TransactionTest, WithoutChangesFlushesNothing) {
    const long flushes = disk->flushes();
    storage->beginTransaction();
    EXPECT_EQ(storage->get("a"), "");
    EXPECT_FALSE(storage->setValue(std::string(257, 'k'), "v"));
    EXPECT_TRUE(storage->commitTransaction());
    EXPECT_EQ(disk->flushes(), flushes);
}

TEST_F(TransactionTest, RollsSettingsAndStateBack) {
    fill();
    const Values before = stored();
    const long flushes = disk->flushes();
    storage->beginTransaction();
    storage->setValue("a", "new");
    state->save("a", "new");
    EXPECT_EQ(storage->get("a"), "new");
    storage->rollBackTransaction();
    EXPECT_EQ(disk->flushes(), flushes);
    EXPECT_EQ(stored(), before);
    EXPECT_TRUE(storage->setValue("a", "later"));
    EXPECT_EQ(disk->flushes(), flushes + 1) << "a change of its own again";
    storage->rollBackTransaction();
    EXPECT_EQ(storage->get("a"), "later");
    EXPECT_EQ(log.take(), Lines{});
}

TEST_F(TransactionTest, IsRolledBackWhenTheStorageIsDestroyed) {
    fill();
    const Values before = stored();
    storage->beginTransaction();
    storage->setValue("a", "new");
    open();
    EXPECT_EQ(stored(), before);
}

TEST_F(TransactionTest, CannotBeNested) {
    storage->beginTransaction();
    EXPECT_THROW(storage->beginTransaction(), std::logic_error);
    EXPECT_TRUE(storage->setValue("a", "1"));
    EXPECT_TRUE(storage->commitTransaction());
    EXPECT_FALSE(storage->commitTransaction()) << "there is none any more";
    EXPECT_EQ(storage->get("a"), "1");
}

TEST_F(TransactionTest, ThatCannotBeBegunRefusesEveryChange) {
    storage->database().execute("BEGIN");
    storage->beginTransaction();
    storage->database().execute("COMMIT");
    EXPECT_FALSE(storage->setValue("a", "1"));
    EXPECT_FALSE(storage->removeValue("a"));
    EXPECT_EQ(storage->setAside("a"), "");
    EXPECT_FALSE(state->save("a", "1"));
    EXPECT_THROW(storage->state("another"), DatabaseError);
    EXPECT_FALSE(storage->commitTransaction());
    const std::string why = ": the transaction was rolled back after an earlier failure";
    EXPECT_EQ(log.take(), (Lines{"3 settings-host:cannot store 'a'" + why, "3 settings-host:cannot remove 'a'" + why,
                                 "3 settings-host:cannot set 'a' aside" + why,
                                 "3 settings-host:cannot save the state of 'a', the old state is kept" + why,
                                 "3 settings-host:cannot commit a transaction" + why}));
    EXPECT_TRUE(storage->setValue("a", "1"));
}

TEST_F(TransactionTest, CountsTheLimitsAnewAfterARollBack) {
    const std::string half(65536 - 6, 'v');
    storage->beginTransaction();
    for (int key = 10; key < 26; ++key) {
        ASSERT_TRUE(storage->setValue("key-" + std::to_string(key), half));
    }
    EXPECT_FALSE(storage->setValue("key-26", half));
    storage->rollBackTransaction();
    EXPECT_TRUE(storage->setValue("key-26", half)) << "what was rolled back does not count";

    storage->beginTransaction();
    EXPECT_TRUE(storage->removeValue("key-26"));
    storage->rollBackTransaction();
    for (int key = 10; key < 25; ++key) {
        ASSERT_TRUE(storage->setValue("key-" + std::to_string(key), half)) << key;
    }
    EXPECT_FALSE(storage->setValue("key-25", half)) << "what was not removed counts";
}

TEST_F(TransactionTest, NotifiesObserversOfItsChangesWhenItEnds) {
    storage->beginTransaction();
    EXPECT_TRUE(storage->setValue("a", "1"));
    EXPECT_FALSE(storage->setValue(std::string(257, 'k'), "1"));
    EXPECT_TRUE(storage->removeValue("b"));
    storage->get("a");
    EXPECT_EQ(recording->take(), (Lines{"write failed", "read"}));
    EXPECT_TRUE(storage->commitTransaction());
    EXPECT_EQ(recording->take(), (Lines{"write", "remove"}));
    EXPECT_EQ(storage->health().failures, 1U);

    storage->beginTransaction();
    EXPECT_TRUE(storage->setValue("a", "2"));
    storage->rollBackTransaction();
    EXPECT_EQ(recording->take(), Lines{"write failed"});
    EXPECT_TRUE(recording->timed);
}

TEST_F(TransactionTest, ReportsTheHealthOfWhatReachedTheDatabase) {
    const auto failToCommit = [this] {
        storage->beginTransaction();
        EXPECT_TRUE(storage->setValue("a", "1"));
        EXPECT_TRUE(storage->setValue("b", "1"));
        disk->failFrom(1);
        EXPECT_FALSE(storage->commitTransaction());
        disk->work();
    };
    failToCommit();
    EXPECT_EQ(recording->take(), (Lines{"write failed", "write failed"}));
    EXPECT_EQ(log.take(), Lines{"3 settings-host:cannot commit a transaction: database: disk I/O error"});
    StorageHealth health = storage->health();
    EXPECT_FALSE(health.writable);
    EXPECT_EQ(health.failures, 2U);
    EXPECT_EQ(health.lastFailure, "database: disk I/O error");
    EXPECT_EQ(health.keys, 0U);

    storage->beginTransaction();
    EXPECT_TRUE(storage->setValue("a", "1"));
    EXPECT_FALSE(storage->health().writable) << "nothing has reached the database yet";
    EXPECT_TRUE(storage->commitTransaction());
    EXPECT_TRUE(storage->health().writable);

    failToCommit();
    storage->beginTransaction();
    EXPECT_TRUE(storage->commitTransaction());
    EXPECT_FALSE(storage->health().writable) << "nothing was tried";
}

TEST_F(TransactionTest, RefusesALogOutAndABackup) {
    fill();
    storage->beginTransaction();
    EXPECT_TRUE(storage->setValue("a", "new"));
    EXPECT_FALSE(storage->clearStorage());
    EXPECT_THROW(storage->backupNow(), DatabaseError);
    EXPECT_FALSE(storage->beginBackup(std::chrono::seconds(0)));
    EXPECT_EQ(log.take(), Lines{"3 settings-host:cannot clear the storage: a transaction is in progress"});
    EXPECT_TRUE(storage->health().writable);
    EXPECT_TRUE(storage->commitTransaction());
    EXPECT_EQ(storage->get("a"), "new");
    EXPECT_EQ(storage->get("b"), "old b");
}

TEST_F(TransactionTest, PausesABackup) {
    fill();
    ASSERT_TRUE(storage->beginBackup(std::chrono::seconds(0)));
    ASSERT_TRUE(storage->continueBackup(1));
    storage->beginTransaction();
    EXPECT_TRUE(storage->setValue("a", "rolled back"));
    EXPECT_TRUE(storage->continueBackup(1000));
    EXPECT_TRUE(storage->beginBackup(std::chrono::seconds(0)));
    storage->rollBackTransaction();
    EXPECT_TRUE(transact('n'));
    while (storage->continueBackup(1)) {
    }
    EXPECT_EQ(log.take(), Lines{"1 settings-host:database backed up"});
    const Values values = stored();
    state.reset();
    storage.reset();
    file += ".backup.1";
    open();
    EXPECT_TRUE(stored() == values);
}

TEST_F(TransactionTest, IsCommittedOrRolledBackWhicheverCallFails) {
    fill();
    disk->work();
    ASSERT_TRUE(transact('o'));
    const long calls = disk->calls();
    ASSERT_GT(calls, 10);
    unsigned failures = 0;
    char filling = 'a';
    for (const auto fault : {&SettingsHostTests::FaultyDisk::failOnce, &SettingsHostTests::FaultyDisk::failFrom,
                             &SettingsHostTests::FaultyDisk::fillUpFrom}) {
        // A checkpoint has more calls.
        for (long call = 1; call <= 3 * calls; call += TestSupport::sanitized ? 5 : 1) {
            SCOPED_TRACE("call " + std::to_string(call));
            const Values before = stored();
            filling = filling == 'z' ? 'a' : static_cast<char>(filling + 1);
            sqlite3_db_release_memory(storage->database().handle());
            (disk.get()->*fault)(call);
            const bool committed = transact(filling);
            failures += disk->hasFailed() ? 1 : 0;
            disk->work();
            EXPECT_EQ(log.take().empty(), committed);
            EXPECT_EQ(storage->health().writable, committed);
            const Values expected = committed ? after(before, filling) : before;
            EXPECT_TRUE(stored() == expected);
            open();
            EXPECT_TRUE(stored() == expected) << "after a restart";
            ASSERT_TRUE(storage->setValue("b", "for the next one"));
            ASSERT_TRUE(storage->removeValue("c.unusable"));
            ASSERT_FALSE(HasFailure());
        }
    }
    EXPECT_GT(failures, TestSupport::sanitized ? 10U : 50U);
}

TEST_F(TransactionTest, IsCompleteOrAbsentWheneverThePowerIsCut) {
    fill();
    state.reset();
    storage.reset();
    disk->watch(folder.path());
    open();
    disk->work();
    ASSERT_TRUE(transact('o'));
    // With a checkpoint now and then.
    const long calls = 2 * disk->calls();
    std::mt19937 random(1);
    unsigned committed = 0;
    unsigned absent = 0;
    char filling = 'a';
    for (long cut = 0; cut < (TestSupport::sanitized ? 1 : 5) * calls; ++cut) {
        SCOPED_TRACE("cut " + std::to_string(cut) + " at one of " + std::to_string(calls) + " calls");
        const Values before = stored();
        filling = filling == 'z' ? 'a' : static_cast<char>(filling + 1);
        sqlite3_db_release_memory(storage->database().handle());
        disk->cutPowerAt(1 + cut % calls);
        const bool reported = transact(filling);
        disk->cutPowerAt(1);
        state.reset();
        storage.reset();
        log.take();
        disk->restorePower(random);
        open();
        const Values found = stored();
        EXPECT_TRUE(found == after(before, filling) || (found == before && !reported));
        (found == before ? absent : committed) += 1;
        ASSERT_TRUE(storage->setValue("b", "for the next one"));
        ASSERT_TRUE(storage->removeValue("c.unusable"));
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(committed, TestSupport::sanitized ? 10U : 50U);
    EXPECT_GT(absent, TestSupport::sanitized ? 10U : 50U);
}

}  // namespace SettingsHandlerKit
