#include <algorithm>
#include <filesystem>
#include <fstream>

#include <sys/stat.h>

#include "BackupSchedule.h"
#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "server/sockets/UnixSocketListener.h"
#include "storage/Backup.h"
#include "storage/FileNames.h"
#include "storage/KeyValueTable.h"
#include "storage/LogOut.h"
#include "storage/Recovery.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHost {

using namespace std::chrono_literals;

class BackupTest : public ::testing::Test {
protected:
    void put(const std::string& key, const std::string& value) { table.put(key, value); }

    /// So many values that a backup takes several steps.
    void fill() {
        for (int number = 0; number < 40; ++number) {
            put("key" + std::to_string(number), std::string(5000, 'v'));
        }
    }

    void backUp() {
        Backup backup(database);
        while (backup.step(8)) {
        }
    }

    std::string valueIn(const std::string& backup, const std::string& key) {
        const std::string opened = folder / "opened.db";
        std::filesystem::copy_file(backup, opened, std::filesystem::copy_options::overwrite_existing);
        Database copy(opened);
        return KeyValueTable(copy, "settings").get(key).value_or("(none)");
    }

    std::string valueIn(int generation, const std::string& key) { return valueIn(backupName(file, generation), key); }

    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder / "state")) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    void makeOlder(int generation, std::chrono::seconds by) {
        const std::string backup = backupName(file, generation);
        std::filesystem::last_write_time(backup, std::filesystem::last_write_time(backup) - by);
    }

    SettingsHostTests::LogRecording log;
    SettingsHostTests::FaultyDisk disk;
    TestSupport::TemporaryDirectory folder;
    std::string file = folder / "state/settings.db";
    Database database{file};
    KeyValueTable table{database, "settings"};
};

TEST_F(BackupTest, KeepsTwoGenerations) {
    for (const std::string value : {"first", "second", "third"}) {
        put("deviceName", value);
        backUp();
    }
    EXPECT_EQ(valueIn(1, "deviceName"), "third");
    EXPECT_EQ(valueIn(2, "deviceName"), "second");
    EXPECT_EQ(files(), (std::vector<std::string>{"settings.db", "settings.db-wal", "settings.db.backup.1",
                                                 "settings.db.backup.2"}));
    struct stat status {};
    EXPECT_EQ(::stat(backupName(file, 1).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
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
    backUp();
    fill();
    {
        Backup backup(database);
        ASSERT_TRUE(backup.step(2));
    }
    EXPECT_EQ(valueIn(1, "deviceName"), "kept");
    EXPECT_EQ(files(), (std::vector<std::string>{"settings.db", "settings.db-wal", "settings.db.backup.1"}));
}

TEST_F(BackupTest, StartsAnewWhereALossOfPowerCutOneShort) {
    std::ofstream(file + ".backup.new") << std::string(9000, 'x');
    std::ofstream(file + ".backup.new-wal") << std::string(9000, 'x');
    put("deviceName", "Den");
    backUp();
    EXPECT_EQ(valueIn(1, "deviceName"), "Den");
    EXPECT_EQ(files(), (std::vector<std::string>{"settings.db", "settings.db-wal", "settings.db.backup.1"}));
}

TEST_F(BackupTest, IsDueOnceADay) {
    EXPECT_TRUE(isBackupDue(file, 24h)) << "there is none";
    backUp();
    EXPECT_FALSE(isBackupDue(file, 24h));
    makeOlder(1, 23h + 59min);
    EXPECT_FALSE(isBackupDue(file, 24h));
    makeOlder(1, 2min);
    EXPECT_TRUE(isBackupDue(file, 24h));
    makeOlder(1, -48h);
    EXPECT_TRUE(isBackupDue(file, 24h)) << "it is from the future";
}

TEST_F(BackupTest, WhateverFailsOnTheWayTheOthersStay) {
    put("deviceName", "older");
    backUp();
    put("deviceName", "newer");
    backUp();
    fill();
    backUp();
    disk.work();
    backUp();
    const long calls = disk.calls();
    put("deviceName", "newest");
    int failures = 0;
    for (long call = 1; call <= calls; ++call) {
        for (const bool full : {false, true}) {
            if (full) {
                disk.fillUpFrom(call);
            } else {
                disk.failOnce(call);
            }
            std::filesystem::copy_file(backupName(file, 1), folder / "before");
            try {
                backUp();
            } catch (const DatabaseError&) {
                ++failures;
                EXPECT_EQ(valueIn(folder / "before", "deviceName"), valueIn(1, "deviceName")) << call;
            }
            disk.work();
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
    backUp();
    fill();
    // What flash that goes bad does: pages of the database are not what was written.
    database.execute("PRAGMA wal_checkpoint(TRUNCATE)");
    {
        std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
        bytes.seekp(4096 * 5);
        bytes << std::string(4096 * 10, '\xff');
    }
    database.execute("PRAGMA shrink_memory");
    Backup backup(database);
    EXPECT_THROW(while (backup.step(1000)){}, DatabaseError);
    EXPECT_EQ(valueIn(1, "deviceName"), "good");
    EXPECT_FALSE(std::filesystem::exists(backupName(file, 2)));
}

class BackupScheduleTest : public BackupTest {
protected:
    /// Serves until `done`, asked again and again, says so.
    void serveUntil(const std::function<bool()>& done) {
        const RepeatingTimer watch(loop, 1ms, 1ms, [&] {
            if (done()) {
                loop.stop();
            }
        });
        loop.run();
    }

    bool exists(int generation) { return std::filesystem::exists(backupName(file, generation)); }

    EventLoop loop;
    /// Without something to serve the loop would end.
    UnixSocketListener listener{loop, folder / "door.sock", Origin::SOCKET, ListenerEvents{}};
};

TEST_F(BackupScheduleTest, MakesABackupOnceItIsDueAndNotBefore) {
    fill();
    const BackupSchedule schedule(loop, database, {1ms, 5ms, 24h, 8});
    int turns = 0;
    serveUntil([&] { return exists(1) && ++turns == 30; });
    EXPECT_EQ(valueIn(1, "key20"), std::string(5000, 'v'));
    EXPECT_FALSE(exists(2)) << "the first is still fresh";
    makeOlder(1, 25h);
    serveUntil([&] { return exists(2); });
    EXPECT_EQ(log.take(),
              (std::vector<std::string>{"1 settings-host:database backed up", "1 settings-host:database backed up"}));
}

TEST_F(BackupScheduleTest, SaysWhatGoesWrongAndTriesAgain) {
    fill();
    disk.fillUpFrom(1);
    const BackupSchedule schedule(loop, database, {1ms, 2ms, 24h, 8});
    std::vector<std::string> lines;
    serveUntil([&] {
        for (const auto& line : log.take()) {
            lines.push_back(line);
            // From the second time on there is room.
            disk.work();
        }
        return exists(1) && lines.size() == 2;
    });
    EXPECT_EQ(lines, (std::vector<std::string>{"3 settings-host:database backup failed: database or disk is full",
                                               "1 settings-host:database backed up"}));
}

TEST_F(BackupScheduleTest, GivesUpWhenToldToAndBeginsAnewAtTheNextLook) {
    fill();
    BackupSchedule schedule(loop, database, {1ms, 5ms, 24h, 1});
    serveUntil([&] { return std::filesystem::exists(file + ".backup.new"); });
    schedule.cancel();
    EXPECT_EQ(files(), (std::vector<std::string>{"settings.db", "settings.db-wal"}));
    serveUntil([&] { return exists(1); });
    EXPECT_EQ(valueIn(1, "key20"), std::string(5000, 'v'));
    EXPECT_EQ(log.take(), std::vector<std::string>{"1 settings-host:database backed up"});
}

TEST_F(BackupScheduleTest, ErasesAtALookWhatALogOutCouldNot) {
    put("deviceName", "Den");
    beginLogOut(database, [this] { table.clear(); });
    disk.fillUpFrom(1);
    finishLogOut(database);
    disk.work();
    EXPECT_EQ(log.take().size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(logOutMarkerName(file)));
    const BackupSchedule schedule(loop, database, {1ms, 5ms, 24h, 1});
    serveUntil([&] { return exists(1); });
    EXPECT_FALSE(std::filesystem::exists(logOutMarkerName(file)));
    EXPECT_EQ(log.take(), std::vector<std::string>{});
}

TEST_F(BackupScheduleTest, GivesUpWhenTheHostStops) {
    fill();
    {
        const BackupSchedule schedule(loop, database, {1ms, 1ms, 24h, 1});
        serveUntil([&] { return std::filesystem::exists(file + ".backup.new"); });
    }
    EXPECT_EQ(files(), (std::vector<std::string>{"settings.db", "settings.db-wal"}));
}

}  // namespace SettingsHost
