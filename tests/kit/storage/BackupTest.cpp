#include <filesystem>
#include <fstream>

#include <sys/stat.h>

#include "kit/support/BackupFixture.h"

namespace SettingsHandlerKit {

using namespace std::chrono_literals;

class BackupTest : public BackupFixture {};

TEST_F(BackupTest, KeepsTwoGenerations) {
    for (const std::string value : {"first", "second", "third"}) {
        put("deviceName", value);
        backUp(database);
    }
    EXPECT_EQ(valueIn(1, "deviceName"), "third");
    EXPECT_EQ(valueIn(2, "deviceName"), "second");
    EXPECT_EQ(files(), (std::vector<std::string>{"settings.db", "settings.db-wal", "settings.db.backup.1",
                                                 "settings.db.backup.2"}));
    struct stat status {};
    EXPECT_EQ(::stat(backupName(file, 1).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(BackupTest, AnEmptyFileDoesNotReplaceAnOlderBackup) {
    for (const std::string value : {"first", "second"}) {
        put("deviceName", value);
        storage.backupNow();
    }
    std::filesystem::resize_file(backupName(file, 1), 0);
    put("deviceName", "third");
    storage.backupNow();
    EXPECT_EQ(valueIn(1, "deviceName"), "third");
    EXPECT_EQ(valueIn(2, "deviceName"), "first");
}

TEST_F(BackupTest, IsMadeWhileTheStorageIsUsed) {
    fill();
    EXPECT_EQ(storage.backupNow(), backupName(file, 1));
    put("deviceName", "after the backup");
    EXPECT_EQ(valueIn(1, "key20"), std::string(5000, 'v'));
    EXPECT_EQ(valueIn(1, "deviceName"), "(none)");
    EXPECT_EQ(storage.backupNow(), backupName(file, 1));
    EXPECT_EQ(valueIn(1, "deviceName"), "after the backup");
    EXPECT_EQ(valueIn(2, "deviceName"), "(none)");
    EXPECT_EQ(log.take(), (std::vector<std::string>(2, "1 settings-host:database backed up")));
}

TEST_F(BackupTest, OfNowReplacesTheOneInProgress) {
    fill();
    EXPECT_TRUE(storage.beginBackup(24h));
    EXPECT_TRUE(storage.continueBackup(2));
    storage.backupNow();
    EXPECT_FALSE(storage.continueBackup(2)) << "it was cancelled";
    EXPECT_FALSE(storage.beginBackup(24h)) << "the new one is fresh";
    EXPECT_EQ(valueIn(1, "key20"), std::string(5000, 'v'));
    EXPECT_EQ(files(), (std::vector<std::string>{"settings.db", "settings.db-wal", "settings.db.backup.1"}));
}

TEST_F(BackupTest, OfNowThrowsWhatFailedAndLeavesTheOthers) {
    put("deviceName", "kept");
    storage.backupNow();
    fill();
    disk->fillUpFrom(1);
    EXPECT_THROW(storage.backupNow(), DatabaseError);
    disk->work();
    EXPECT_EQ(valueIn(1, "key20"), "(none)");
    EXPECT_EQ(valueIn(1, "deviceName"), "kept");
    EXPECT_TRUE(storage.health().writable) << "says nothing about changes";
}

TEST_F(BackupTest, IsConsistentWhateverIsChangedMeanwhile) {
    fill();
    Backup backup(database);
    ASSERT_TRUE(backup.step(2));
    put("key0", "changed in a part that was copied");
    put("key39", "changed in a part that was not");
    put("added", "meanwhile");
    while (backup.step(2)) {
    }
    EXPECT_EQ(valueIn(1, "key0"), "changed in a part that was copied");
    EXPECT_EQ(valueIn(1, "key39"), "changed in a part that was not");
    EXPECT_EQ(valueIn(1, "added"), "meanwhile");
    EXPECT_EQ(valueIn(1, "key20"), std::string(5000, 'v'));
}

TEST_F(BackupTest, OneThatIsGivenUpLeavesTheOthers) {
    put("deviceName", "kept");
    backUp(database);
    fill();
    {
        Backup backup(database);
        ASSERT_TRUE(backup.step(2));
    }
    EXPECT_EQ(valueIn(1, "deviceName"), "kept");
    EXPECT_EQ(files(), (std::vector<std::string>{"settings.db", "settings.db-wal", "settings.db.backup.1"}));
}

TEST_F(BackupTest, StartsAgainAfterALossOfPowerInterruptedOne) {
    std::ofstream(file + ".backup.new") << std::string(9000, 'x');
    std::ofstream(file + ".backup.new-wal") << std::string(9000, 'x');
    put("deviceName", "Den");
    backUp(database);
    EXPECT_EQ(valueIn(1, "deviceName"), "Den");
    EXPECT_EQ(files(), (std::vector<std::string>{"settings.db", "settings.db-wal", "settings.db.backup.1"}));
}

TEST_F(BackupTest, IsDueOnceADay) {
    EXPECT_TRUE(isBackupDue(Disk(), file, 24h)) << "there is none";
    backUp(database);
    EXPECT_FALSE(isBackupDue(Disk(), file, 24h));
    makeOlder(1, 23h + 59min);
    EXPECT_FALSE(isBackupDue(Disk(), file, 24h));
    makeOlder(1, 2min);
    EXPECT_TRUE(isBackupDue(Disk(), file, 24h));
    makeOlder(1, -48h);
    EXPECT_TRUE(isBackupDue(Disk(), file, 24h)) << "it is from the future";
}

TEST_F(BackupTest, AFailureAtAnyCallKeepsTheOthers) {
    put("deviceName", "older");
    backUp(database);
    put("deviceName", "newer");
    backUp(database);
    fill();
    backUp(database);
    disk->work();
    backUp(database);
    const long calls = disk->calls();
    put("deviceName", "newest");
    int failures = 0;
    for (long call = 1; call <= calls; ++call) {
        for (const bool full : {false, true}) {
            if (full) {
                disk->fillUpFrom(call);
            } else {
                disk->failOnce(call);
            }
            std::filesystem::copy_file(backupName(file, 1), folder / "before");
            try {
                backUp(database);
            } catch (const DatabaseError&) {
                ++failures;
                EXPECT_EQ(valueIn(folder / "before", "deviceName"), valueIn(1, "deviceName")) << call;
            }
            disk->work();
            std::filesystem::remove(folder / "before");
            for (int generation = 1; generation <= backupGenerations; ++generation) {
                EXPECT_EQ(valueIn(generation, "key20"), std::string(5000, 'v')) << call;
            }
        }
    }
    EXPECT_GT(failures, calls / 2);
    EXPECT_EQ(table.get("deviceName"), "newest");
}

TEST_F(BackupTest, ADamagedCopyDoesNotReplaceAGoodOne) {
    put("deviceName", "good");
    backUp(database);
    fill();
    // What flash that goes bad does: pages of the database are not what was written.
    database.execute("PRAGMA wal_checkpoint(TRUNCATE)");
    {
        std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
        bytes.seekp(std::streamoff{4096} * 5);
        bytes << std::string(std::size_t{4096} * 10, '\xff');
    }
    database.execute("PRAGMA shrink_memory");
    Backup backup(database);
    EXPECT_THROW(while (backup.step(1000)){}, DatabaseError);
    EXPECT_EQ(valueIn(1, "deviceName"), "good");
    EXPECT_FALSE(std::filesystem::exists(backupName(file, 2)));
}

}  // namespace SettingsHandlerKit
