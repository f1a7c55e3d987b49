#include <filesystem>
#include <fstream>
#include <random>

#include <sqlite3.h>

#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "storage/Backup.h"
#include "storage/FileNames.h"
#include "storage/KeyValueTable.h"
#include "storage/Recovery.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

class RecoveryTest : public ::testing::Test {
protected:
    using Source = Recovery::Source;

    /// Opens the database, stores `value` and, if wanted, backs up.
    void store(const std::string& value, bool backUp) {
        Database database(file, disk);
        KeyValueTable(database, "settings").put("deviceName", value);
        if (backUp) {
            Backup backup(database);
            while (backup.step(100)) {
            }
        }
    }

    /// Opens the database as the host does. Returns: the stored value.
    std::string open() {
        recovery = Recovery();
        Database database = openOrRecover(file, disk, recovery);
        return KeyValueTable(database, "settings").get("deviceName").value_or("(none)");
    }

    void damage(const std::string& path) { std::ofstream(path) << std::string(10000, 'x'); }

    std::string content(const std::string& name) { return TestSupport::contentOf(folder / name); }

    std::string line(const std::string& text) { return "3 settings-host:" + text; }

    std::string damageLine() { return line(file + " is damaged or not a database (database: file is not a database)"); }

    SettingsHostTests::LogRecording log;
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    TestSupport::TemporaryDirectory folder;
    std::string file = folder / "settings.db";
    Recovery recovery;
};

TEST_F(RecoveryTest, AGoodDatabaseIsOpenedWithoutALogLine) {
    EXPECT_EQ(open(), "(none)");
    store("Den", true);
    EXPECT_EQ(open(), "Den");
    EXPECT_EQ(recovery.source, Source::NOT_NEEDED);
    EXPECT_EQ(recovery.setAside, "");
    EXPECT_EQ(log.take(), std::vector<std::string>{});
}

TEST_F(RecoveryTest, ADamagedDatabaseIsKeptAndRestored) {
    store("backed up", true);
    store("newer", false);
    damage(file);
    EXPECT_EQ(open(), "backed up");
    EXPECT_EQ(recovery.source, Source::BACKUP);
    EXPECT_EQ(recovery.setAside, "settings.db.damaged");
    EXPECT_EQ(content("settings.db.damaged"), std::string(10000, 'x'));
    EXPECT_EQ(log.take(),
              (std::vector<std::string>{
                  damageLine(), line("the old files were kept as settings.db.damaged"),
                  line("the database was restored from settings.db.backup.1; changes made since that backup "
                       "are lost")}));
    EXPECT_EQ(open(), "backed up");
    EXPECT_EQ(recovery.source, Source::NOT_NEEDED) << "the next start needs no recovery";
    EXPECT_TRUE(std::filesystem::exists(backupName(file, 1))) << "the backup stays";
}

TEST_F(RecoveryTest, WithoutABackupTheDatabaseStartsEmpty) {
    damage(file);
    EXPECT_EQ(open(), "(none)");
    EXPECT_EQ(recovery.source, Source::DEFAULTS);
    EXPECT_EQ(content("settings.db.damaged"), std::string(10000, 'x'));
    EXPECT_EQ(log.take(),
              (std::vector<std::string>{damageLine(), line("the old files were kept as settings.db.damaged"),
                                        line("no usable backup; all settings have their "
                                             "defaults")}));
}

TEST_F(RecoveryTest, TheSecondBackupServesWhenTheFirstIsDamagedToo) {
    store("first", true);
    store("second", true);
    damage(file);
    damage(backupName(file, 1));
    EXPECT_EQ(open(), "first");
    const auto lines = log.take();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[2], line("cannot use the backup settings.db.backup.1: " + file +
                             ".restoring is damaged or not a database (database: file is not a database)"));
    EXPECT_EQ(lines[3],
              line("the database was restored from settings.db.backup.2; changes made since that backup are lost"));
    EXPECT_EQ(content("settings.db.backup.1"), std::string(10000, 'x')) << "the damaged backup is unchanged";
    damage(file);
    damage(backupName(file, 2));
    EXPECT_EQ(open(), "(none)");
    EXPECT_FALSE(std::filesystem::exists(file + ".restoring")) << "the copy of a damaged backup";
}

TEST_F(RecoveryTest, NothingThatWasKeptIsOverwritten) {
    for (const std::string expected : {"settings.db.damaged", "settings.db.damaged.2", "settings.db.damaged.3"}) {
        std::ofstream(file) << std::string(5000, 'x') << expected;
        open();
        EXPECT_EQ(recovery.setAside, expected);
        EXPECT_EQ(content(expected), std::string(5000, 'x') + expected);
    }
    EXPECT_EQ(content("settings.db.damaged"), std::string(5000, 'x') + "settings.db.damaged");
}

TEST_F(RecoveryTest, TheLogIsKeptWithItsDatabase) {
    std::string bad;
    {
        Database database(file, disk);
        KeyValueTable table(database, "settings");
        for (int number = 0; number < 60; ++number) {
            table.put("key" + std::to_string(number), std::string(700, 'v'));
        }
        database.execute("PRAGMA wal_checkpoint(TRUNCATE)");
        bad = content("settings.db").replace(4096, 5UL * 4096, 5UL * 4096, 'x');
        table.put("key59", "only in the log");
        std::filesystem::copy_file(file + "-wal", folder / "log");
    }
    std::ofstream(file, std::ios::binary) << bad;
    std::filesystem::rename(folder / "log", file + "-wal");
    const std::string written = content("settings.db-wal");
    EXPECT_GT(written.size(), 4096U);
    open();
    EXPECT_EQ(recovery.setAside, "settings.db.damaged");
    EXPECT_TRUE(content("settings.db.damaged-wal") == written);
    EXPECT_TRUE(content("settings.db.damaged") == bad);
}

TEST_F(RecoveryTest, AMissingOrEmptyDatabaseIsRestoredToo) {
    store("backed up", true);
    std::filesystem::remove(file);
    EXPECT_EQ(open(), "backed up");
    EXPECT_EQ(recovery.source, Source::BACKUP);
    EXPECT_EQ(recovery.setAside, "");
    EXPECT_EQ(log.take(),
              (std::vector<std::string>{
                  line(file + " is missing or empty, although its backups or write-ahead log exist"),
                  line("the database was restored from settings.db.backup.1; changes made since that backup "
                       "are lost")}));
    std::ofstream(file).close();
    EXPECT_EQ(open(), "backed up");
}

TEST_F(RecoveryTest, ALossOfPowerBetweenTheRenamesIsRecoveredFrom) {
    std::ofstream(file + "-wal") << "the log of a database that was set aside";
    EXPECT_EQ(open(), "(none)");
    EXPECT_EQ(recovery.setAside, "settings.db.damaged");
    EXPECT_EQ(content("settings.db.damaged-wal"), "the log of a database that was set aside");
}

TEST_F(RecoveryTest, ALossOfPowerDuringARestoreIsRecoveredFrom) {
    store("backed up", true);
    std::filesystem::remove(file);
    std::ofstream(file + ".restoring") << std::string(10000, 'x');
    std::ofstream(file + ".restoring-wal") << std::string(10000, 'x');
    EXPECT_EQ(open(), "backed up");
    EXPECT_FALSE(std::filesystem::exists(file + ".restoring"));
    EXPECT_FALSE(std::filesystem::exists(file + ".restoring-wal"));
}

TEST_F(RecoveryTest, ALogThatWasKeptIsNotOverwritten) {
    std::ofstream(file + ".damaged-wal") << "kept without its database";
    damage(file);
    std::ofstream(file + "-wal") << "another log";
    EXPECT_EQ(open(), "(none)");
    EXPECT_EQ(recovery.setAside, "settings.db.damaged.2");
    EXPECT_EQ(content("settings.db.damaged-wal"), "kept without its database");
    EXPECT_EQ(content("settings.db.damaged.2-wal"), "another log");
}

TEST_F(RecoveryTest, ALogOfAnEarlierRestoreIsNotReadIntoTheCopy) {
    store("backed up", true);
    std::filesystem::copy_file(backupName(file, 1), folder / "copy.db");
    {
        Database copy(folder / "copy.db", disk);
        KeyValueTable(copy, "settings").put("deviceName", "of the log");
        std::filesystem::copy_file(folder / "copy.db-wal", file + ".restoring-wal");
    }
    std::filesystem::remove(file);
    EXPECT_EQ(open(), "backed up");
    EXPECT_FALSE(std::filesystem::exists(file + ".restoring-wal"));
}

TEST_F(RecoveryTest, AJournalOfAnEarlierRestoreIsNotRolledBackIntoTheCopy) {
    store("backed up", true);
    std::filesystem::copy_file(backupName(file, 1), folder / "copy.db");
    {
        Database copy(folder / "copy.db", disk);
        KeyValueTable table(copy, "settings");
        table.put("deviceName", "of the journal");
        // Without syncs the journal is valid at once.
        copy.execute("PRAGMA journal_mode=DELETE; PRAGMA synchronous=OFF; BEGIN");
        table.put("deviceName", "never committed");
        std::filesystem::copy_file(folder / "copy.db-journal", file + ".restoring-journal");
        copy.execute("ROLLBACK");
    }
    std::filesystem::remove(file);
    EXPECT_EQ(open(), "backed up");
    EXPECT_FALSE(std::filesystem::exists(file + ".restoring-journal"));
}

TEST_F(RecoveryTest, ForeignAndNewerDatabasesAreRefusedAndLeftUnchanged) {
    store("backed up", true);
    {
        Database database(file, disk);
        database.execute("PRAGMA user_version=99");
    }
    const std::string newer = content("settings.db");
    EXPECT_THROW(open(), DatabaseError);
    EXPECT_EQ(content("settings.db"), newer);
    std::filesystem::remove(file);
    sqlite3* theirs = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &theirs), SQLITE_OK);
    sqlite3_exec(theirs, "CREATE TABLE theirs (x)", nullptr, nullptr, nullptr);
    sqlite3_close(theirs);
    const std::string foreign = content("settings.db");
    EXPECT_THROW(open(), DatabaseError);
    EXPECT_EQ(content("settings.db"), foreign);
    EXPECT_EQ(log.take(), std::vector<std::string>{});
}

TEST_F(RecoveryTest, EveryDamageOfARealDatabaseIsFoundOrHarmless) {
    {
        Database database(file, disk);
        KeyValueTable table(database, "settings");
        for (int number = 0; number < 60; ++number) {
            table.put("key" + std::to_string(number), std::string(700, 'v'));
        }
    }
    const std::string good = content("settings.db");
    int found = 0;
    for (std::size_t page = 0; page < good.size() / 4096; ++page) {
        std::string bad = good;
        bad.replace(page * 4096, 4096, 4096, '\0');
        std::ofstream(file, std::ios::binary) << bad;
        open();
        found += recovery.source == Source::DEFAULTS ? 1 : 0;
        log.take();
    }
    for (const std::size_t size : {good.size() - 4096, good.size() / 2, std::size_t{4096}, std::size_t{100}}) {
        std::ofstream(file, std::ios::binary) << good.substr(0, size);
        open();
        EXPECT_EQ(recovery.source, Source::DEFAULTS) << size;
        log.take();
    }
    EXPECT_EQ(found, static_cast<int>(good.size() / 4096)) << "every page is in use";
}

/// The power is cut while a damaged database is restored, or soon after.
class RecoveryPowerCutTest : public RecoveryTest {
protected:
    RecoveryPowerCutTest() {
        store("backed up", true);
        damage(file);
        std::filesystem::create_directory(folder / "template");
        for (const auto* name : {"settings.db", "settings.db.backup.1"}) {
            std::filesystem::copy_file(folder / name, folder / ("template/" + std::string(name)));
        }
    }

    void begin() {
        device = std::make_unique<TestSupport::TemporaryDirectory>(TestSupport::memoryFolder());
        std::filesystem::copy(folder / "template", device->path());
        file = *device / "settings.db";
        disk->watch(device->path());
    }

    std::unique_ptr<TestSupport::TemporaryDirectory> device;
};

TEST_F(RecoveryPowerCutTest, AtAnyCallTheNextStartCompletesTheRecovery) {
    begin();
    disk->work();
    EXPECT_EQ(open(), "backed up");
    const long calls = disk->calls();
    for (long call = 1; call <= calls; ++call) {
        for (unsigned seed = 0; seed < 3; ++seed) {
            SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(calls) + ", " + std::to_string(seed));
            std::mt19937 random(static_cast<unsigned>(call) * 3 + seed);
            begin();
            disk->cutPowerAt(call);
            try {
                open();
            } catch (const DatabaseError&) {
                // Power cut during the start.
            }
            disk->restorePower(random);
            ASSERT_EQ(open(), "backed up");
            EXPECT_EQ(std::filesystem::file_size(file + ".damaged"), 10000U);
            EXPECT_FALSE(std::filesystem::exists(file + ".damaged.2")) << "the restored database was incomplete";
        }
    }
    EXPECT_GT(calls, 20);
}

TEST_F(RecoveryPowerCutTest, LaterLosesNoChangeThatWasAnswered) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        begin();
        {
            Recovery ignored;
            Database database = openOrRecover(file, disk, ignored);
            KeyValueTable(database, "settings").put("deviceName", "answered");
            disk->cutPowerAt(1);
        }
        disk->restorePower(random);
        EXPECT_EQ(open(), "answered");
    }
}

}  // namespace SettingsHandlerKit
