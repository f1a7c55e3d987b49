#include <algorithm>
#include <filesystem>
#include <fstream>

#include <sqlite3.h>
#include <sys/stat.h>

#include "SettingsHandlerTesting/kit/FakeValueObserver.h"
#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "kit/support/OpenStorage.h"
#include "kit/support/StorageRecording.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

using TestSupport::modeOf;

class StorageTest : public ::testing::Test {
protected:
    void open() {
        storage.reset();
        storage = std::make_unique<SettingsHostTests::OpenStorage>(file, disk);
        storage->observe(recording);
        storage->observeValues(removed);
    }

    std::string read(const std::string& key) { return storage->get(key); }

    void expectRefused(const std::string& part) {
        try {
            const Database refused(file, disk);
            FAIL() << "the database was opened";
        } catch (const DatabaseError& error) {
            EXPECT_NE(std::string(error.what()).find(part), std::string::npos) << error.what();
        }
    }

    void sql(const std::string& statements) {
        sqlite3* connection = nullptr;
        ASSERT_EQ(sqlite3_open(file.c_str(), &connection), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(connection, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(connection);
        sqlite3_close(connection);
    }

    SettingsHostTests::LogRecording log;
    TestSupport::TemporaryDirectory folder;
    std::string file = folder / "state/deep/settings.db";
    SettingsHandlerTesting::Journal journal;
    std::shared_ptr<SettingsHandlerTesting::FakeValueObserver> removed =
        std::make_shared<SettingsHandlerTesting::FakeValueObserver>(journal);
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    std::shared_ptr<SettingsHostTests::StorageRecording> recording =
        std::make_shared<SettingsHostTests::StorageRecording>();
    std::unique_ptr<SettingsHostTests::OpenStorage> storage;
};

TEST_F(StorageTest, SpecialNamesOfSqliteAreFileNames) {
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    for (const auto* name : {":memory:", "file:x?mode=memory", "plain.db"}) {
        file = name;
        open();
        EXPECT_TRUE(storage->setValue("deviceName", "Den"));
        open();
        EXPECT_EQ(read("deviceName"), "Den") << name;
    }
    std::filesystem::current_path(before);
}

TEST_F(StorageTest, KeepsValuesOverARestart) {
    open();
    EXPECT_TRUE(storage->setValue("key", std::string("a\0b", 3)));
    open();
    EXPECT_EQ(read("key"), std::string("a\0b", 3));
}

TEST_F(StorageTest, MakesPrivateFoldersAndFiles) {
    const mode_t before = ::umask(0);
    open();
    EXPECT_TRUE(storage->setValue("key", "value"));
    EXPECT_EQ(modeOf(folder / "state"), 0700U);
    EXPECT_EQ(modeOf(folder / "state/deep"), 0700U);
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(modeOf(file + "-wal"), 0600U);
    ::umask(before);
}

TEST_F(StorageTest, LeavesTheModeOfWhatItDidNotMake) {
    ::mkdir((folder / "state").c_str(), 0755);
    ::chmod((folder / "state").c_str(), 0755);
    open();
    EXPECT_EQ(modeOf(folder / "state"), 0755U);
}

TEST_F(StorageTest, WritesWithFullDurability) {
    open();
    Statement journalMode(storage->database(), "PRAGMA journal_mode");
    journalMode.step();
    EXPECT_EQ(journalMode.column(0), "wal");
    Statement synchronous(storage->database(), "PRAGMA synchronous");
    synchronous.step();
    EXPECT_EQ(synchronous.number(0), 2);
}

TEST_F(StorageTest, KeepsTemporaryFilesInMemory) {
    open();
    Statement temporary(storage->database(), "PRAGMA temp_store");
    temporary.step();
    EXPECT_EQ(temporary.number(0), 2);
}

TEST_F(StorageTest, LocksTheFileExclusively) {
    open();
    expectRefused("in use by another process");
    storage->setValue("key", "value");
    EXPECT_EQ(read("key"), "value");
}

TEST_F(StorageTest, RefusesForeignFilesAndLeavesThemUnchanged) {
    std::filesystem::create_directories(folder / "state/deep");
    std::ofstream(file) << std::string(5000, 'x');
    expectRefused("damaged or not a database");
    EXPECT_EQ(std::filesystem::file_size(file), 5000U);
    std::filesystem::remove(file);
    sql("CREATE TABLE theirs (x); INSERT INTO theirs VALUES (1)");
    expectRefused("belongs to another program");
    std::filesystem::remove(file);
    open();
    storage->database().execute("PRAGMA user_version=99");
    storage.reset();
    expectRefused("newer version");
}

TEST_F(StorageTest, RefusesADamagedFile) {
    open();
    for (int key = 0; key < 200; ++key) {
        storage->setValue("key" + std::to_string(key), std::string(500, 'v'));
    }
    storage.reset();
    {
        std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
        bytes.seekp(std::streamoff{4096} * 3);
        bytes << std::string(4096UL * 3, '\xff');
    }
    expectRefused("damaged");
}

TEST_F(StorageTest, ReportsAFolderThatCannotBeCreated) {
    std::ofstream(folder / "state") << "a file instead of a folder";
    expectRefused("cannot");
}

TEST_F(StorageTest, RefusesWhatExceedsTheLimitsWithTheReason) {
    open();
    EXPECT_TRUE(storage->setValue(std::string(256, 'k'), "v"));
    EXPECT_TRUE(storage->setValue("k", std::string(65536, 'v')));
    EXPECT_EQ(log.take(), std::vector<std::string>{});
    EXPECT_FALSE(storage->setValue(std::string(257, 'k'), "v"));
    EXPECT_FALSE(storage->setValue("k", std::string(65537, 'v')));
    EXPECT_EQ(log.take(),
              (std::vector<std::string>{
                  "3 settings-host:cannot store '" + std::string(64, 'k') + "…': the key is longer than 256 bytes",
                  "3 settings-host:cannot store 'k': the value is longer than 64 KiB"}));
    EXPECT_TRUE(storage->health().writable) << "the database works";
    EXPECT_EQ(read("k"), std::string(65536, 'v')) << "the old value is still there";
}

TEST_F(StorageTest, TakesAThousandKeysAndThenReplacesOnly) {
    open();
    storage->database().execute("BEGIN");
    for (int time = 0; time < 1500; ++time) {
        ASSERT_TRUE(storage->setValue("key0", std::to_string(time))) << "replaced values do not count";
    }
    for (int key = 0; key < 1000; ++key) {
        ASSERT_TRUE(storage->setValue("key" + std::to_string(key), "v"));
    }
    storage->database().execute("COMMIT");
    EXPECT_FALSE(storage->setValue("one more", "v"));
    EXPECT_EQ(log.take(),
              std::vector<std::string>{"3 settings-host:cannot store 'one more': the limit of 1,000 keys is reached"});
    EXPECT_TRUE(storage->setValue("key5", "new"));
    EXPECT_TRUE(storage->removeValue("key6"));
    EXPECT_TRUE(storage->setValue("one more", "v"));
}

TEST_F(StorageTest, TakesAMebibyteOfKeysAndValuesTogether) {
    open();
    const std::string value(65536 - 4, 'v');
    for (int key = 10; key < 26; ++key) {
        ASSERT_TRUE(storage->setValue("ke" + std::to_string(key), value));
    }
    EXPECT_EQ(log.take(), std::vector<std::string>{});
    EXPECT_FALSE(storage->setValue("x", ""));
    EXPECT_FALSE(storage->setValue("ke10", value + "v"));
    const std::string reason = ": keys and values would exceed 1 MiB in total";
    EXPECT_EQ(log.take(), (std::vector<std::string>{"3 settings-host:cannot store 'x'" + reason,
                                                    "3 settings-host:cannot store 'ke10'" + reason}));
    EXPECT_TRUE(read("ke10") == value);
    EXPECT_TRUE(storage->setValue("ke10", std::string(65536 - 4, 'w'))) << "as large as before";
    EXPECT_TRUE(storage->setValue("ke10", std::string(65536 - 14, 'w')));
    EXPECT_FALSE(storage->setValue("moved", std::string(6, 'v')));
    EXPECT_TRUE(storage->setValue("moved", std::string(5, 'v')));
    EXPECT_TRUE(storage->removeValue("ke11"));
    EXPECT_TRUE(storage->setValue("ke12", value + "vvvv"));
    EXPECT_TRUE(storage->clearStorage());
    EXPECT_EQ(log.take().size(), 1U);
    for (int key = 10; key < 25; ++key) {
        ASSERT_TRUE(storage->setValue("ke" + std::to_string(key), value));
    }
    storage->setAside("ke10");
    constexpr std::size_t left = 65536 - 4 - 9;
    EXPECT_FALSE(storage->setValue("last", std::string(left + 1, 'v'))) << "the key is 9 bytes longer now";
    EXPECT_TRUE(storage->setValue("last", std::string(left, 'v')));
}

TEST_F(StorageTest, CountsBytesAndNotCharacters) {
    open();
    std::string value;
    while (value.size() < 65530) {
        value += "\u20ac";
    }
    for (int key = 0; key < 15; ++key) {
        ASSERT_TRUE(storage->setValue(std::to_string(key), value + '\0'));
    }
    open();
    EXPECT_TRUE(storage->setValue("last", value));
    EXPECT_FALSE(storage->setValue("one more", value));
}

TEST_F(StorageTest, KeepsWhatWasStoredBeyondTheLimitsAndRefusesGrowthOnly) {
    open();
    storage.reset();
    sql("WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers WHERE n < 1100) "
        "INSERT INTO settings SELECT 'key' || n, printf('%.*c', 2000, 'v') FROM numbers");
    open();
    EXPECT_EQ(read("key1100"), std::string(2000, 'v'));
    EXPECT_FALSE(storage->setValue("key1", std::string(2001, 'w')));
    EXPECT_FALSE(storage->setValue("new", ""));
    EXPECT_EQ(log.take(), (std::vector<std::string>{
                              "3 settings-host:cannot store 'key1': keys and values would exceed 1 MiB in total",
                              "3 settings-host:cannot store 'new': the limit of 1,000 keys is reached"}));
    EXPECT_TRUE(storage->setValue("key1", std::string(2000, 'w')));
    EXPECT_TRUE(storage->setValue("key2", "short"));
    EXPECT_EQ(storage->setAside("key3"), "key3.unusable") << "renaming adds no bytes";
    EXPECT_EQ(read("key3.unusable"), std::string(2000, 'v'));
    EXPECT_TRUE(storage->removeValue("key4"));
    EXPECT_EQ(log.take(), std::vector<std::string>{});
}

TEST_F(StorageTest, AFullDiskIsAnsweredWithFalseAndLosesNothing) {
    open();
    EXPECT_TRUE(storage->setValue("key", "old"));
    const auto state = storage->state("simulation");
    EXPECT_TRUE(state->save("key", "old"));
    Statement pages(storage->database(), "PRAGMA page_count");
    pages.step();
    storage->database().execute("PRAGMA max_page_count=" + pages.column(0));
    const std::string big(60000, 'v');
    EXPECT_FALSE(storage->setValue("key", big));
    EXPECT_EQ(read("key"), "old");
    EXPECT_FALSE(storage->health().writable);
    const auto lines = log.take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0], "3 settings-host:cannot store 'key': database: database or disk is full");
    EXPECT_FALSE(state->save("key", big));
    EXPECT_EQ(state->load("key"), "old");
    EXPECT_EQ(log.take().size(), 1U);
    for (int number = 0; number < 20; ++number) {
        EXPECT_FALSE(storage->setValue("key" + std::to_string(number), big));
    }
    storage->database().execute("PRAGMA max_page_count=100000");
    EXPECT_TRUE(storage->setValue("key", big)) << "what was not stored does not count";
    EXPECT_TRUE(storage->health().writable);
}

TEST_F(StorageTest, EveryFailureOfTheDatabaseIsAnsweredAndLogged) {
    open();
    storage->database().execute("DROP TABLE settings");
    std::string value = "left over";
    storage->getValue("key", value);
    EXPECT_EQ(value, "");
    EXPECT_FALSE(storage->setValue("key", "v"));
    EXPECT_FALSE(storage->removeValue("key"));
    EXPECT_FALSE(storage->clearStorage());
    EXPECT_EQ(storage->setAside("key"), "");
    const auto lines = log.take();
    EXPECT_EQ(lines.size(), 5U);
    for (const auto& line : lines) {
        EXPECT_EQ(line.rfind("3 settings-host:cannot ", 0), 0U) << line;
    }
    EXPECT_EQ(removed->take(), std::vector<std::string>{});
}

TEST_F(StorageTest, ClearingReportsTheRemovedKeys) {
    open();
    storage->setValue("b", "1");
    storage->setValue("a", "2");
    EXPECT_TRUE(storage->clearStorage());
    EXPECT_EQ(log.take(), std::vector<std::string>{});
    EXPECT_EQ(removed->take(), (std::vector<std::string>{"a", "b"}));
}

TEST_F(StorageTest, NoRemovedKeysAreReportedWhenClearingFails) {
    open();
    storage->setValue("b", "1");
    storage->setValue("a", "2");
    Statement pages(storage->database(), "PRAGMA page_count");
    pages.step();
    storage->database().execute("PRAGMA max_page_count=" + pages.column(0));
    EXPECT_FALSE(storage->clearStorage());
    EXPECT_EQ(removed->take(), std::vector<std::string>{});
    EXPECT_EQ(read("b"), "1");
    EXPECT_EQ(log.take(),
              std::vector<std::string>{"3 settings-host:cannot clear the storage: database: database or disk is full"});
}

TEST_F(StorageTest, SyncsEveryChangeBeforeItIsAnswered) {
    open();
    const auto flushesOf = [&](const std::function<bool()>& change) {
        const long before = disk->flushes();
        EXPECT_TRUE(change());
        return disk->flushes() - before;
    };
    EXPECT_EQ(flushesOf([&] { return storage->setValue("a", "1"); }), 1);
    EXPECT_EQ(flushesOf([&] { return storage->setValue("a", "2"); }), 1);
    EXPECT_EQ(flushesOf([&] { return storage->setValue("b", "3"); }), 1);
    EXPECT_EQ(flushesOf([&] { return storage->removeValue("a"); }), 1);
    EXPECT_EQ(flushesOf([&] { return !storage->setAside("b").empty(); }), 1);
}

TEST_F(StorageTest, TheLogStaysSmall) {
    open();
    std::uintmax_t largest = 0;
    for (int number = 0; number < 500; ++number) {
        ASSERT_TRUE(storage->setValue("key", std::to_string(number)));
        largest = std::max(largest, std::filesystem::file_size(file + "-wal"));
    }
    // Including the frames of the change that causes the checkpoint.
    constexpr std::uintmax_t frame = 4096 + 24;
    EXPECT_GT(largest, 60 * frame) << "checkpoints are too frequent";
    EXPECT_LT(largest, 80 * frame);
}

TEST_F(StorageTest, SetsAValueAsideUnderAFreeKey) {
    open();
    for (const std::string expected : {"orliaLocale.unusable", "orliaLocale.unusable.2", "orliaLocale.unusable.3"}) {
        storage->setValue("orliaLocale", "value of " + expected);
        EXPECT_EQ(storage->setAside("orliaLocale"), expected);
        EXPECT_EQ(read("orliaLocale"), "");
        EXPECT_EQ(read(expected), "value of " + expected);
    }
    EXPECT_EQ(storage->setAside("absent"), "");
}

TEST_F(StorageTest, ReadsValuesOfAnyType) {
    open();
    storage.reset();
    sql("INSERT INTO settings VALUES ('number', 5), ('blob', x'00ff00')");
    open();
    EXPECT_EQ(read("number"), "5");
    EXPECT_EQ(read("blob"), std::string("\0\xff\0", 3));
}

TEST_F(StorageTest, ClearingLeavesOtherTables) {
    open();
    const auto state = storage->state("simulation");
    EXPECT_TRUE(state->save("key", "kept"));
    EXPECT_EQ(state->load("absent"), std::nullopt);
    storage->setValue("key", "gone");
    storage->clearStorage();
    EXPECT_EQ(state->load("key"), "kept");
}

TEST_F(StorageTest, StateHasATableOfItsOwn) {
    open();
    const auto first = storage->state("first");
    const auto second = storage->state("second_2");
    EXPECT_TRUE(first->save("key", "1"));
    EXPECT_EQ(second->load("key"), std::nullopt);
    EXPECT_EQ(read("key"), "");
    EXPECT_EQ(storage->health().keys, 0U);
    for (const std::string name :
         {"settings", "Settings", "log_out", "sqlite_master", "", "2", "a b", "a;", "\u00e4"}) {
        EXPECT_THROW(storage->state(name), std::invalid_argument) << name;
    }
}

TEST_F(StorageTest, NotifiesEveryObserver) {
    open();
    const auto another = std::make_shared<SettingsHostTests::StorageRecording>();
    const auto anotherOfValues = std::make_shared<SettingsHandlerTesting::FakeValueObserver>(journal);
    storage->observe(another);
    storage->observeValues(anotherOfValues);
    EXPECT_TRUE(storage->setValue("a", "1"));
    EXPECT_TRUE(storage->clearStorage());
    EXPECT_EQ(another->take(), (std::vector<std::string>{"write", "clear"}));
    EXPECT_EQ(recording->take(), (std::vector<std::string>{"write", "clear"}));
    EXPECT_EQ(anotherOfValues->take(), std::vector<std::string>{"a"});
    EXPECT_EQ(removed->take(), std::vector<std::string>{"a"});
}

TEST_F(StorageTest, NeedsADisk) {
    EXPECT_THROW(Storage(file, nullptr), std::invalid_argument);
}

TEST_F(StorageTest, NotifiesItsObserverOfEveryOperationAndReportsItsHealth) {
    open();
    EXPECT_TRUE(storage->setValue("a", "1"));
    EXPECT_FALSE(storage->setValue(std::string(257, 'k'), "1"));
    read("a");
    EXPECT_TRUE(storage->removeValue("a"));
    EXPECT_TRUE(storage->setValue("b", "2"));
    storage->setAside("b");
    EXPECT_EQ(recording->take(),
              (std::vector<std::string>{"write", "write failed", "read", "remove", "write", "write"}));
    const StorageHealth health = storage->health();
    EXPECT_TRUE(health.writable) << "a value that is refused for its size says nothing about the database";
    EXPECT_EQ(health.failures, 1U);
    EXPECT_EQ(health.lastFailure, "the key is longer than 256 bytes");
    EXPECT_EQ(health.keys, 1U);
    EXPECT_TRUE(storage->clearStorage());
    EXPECT_EQ(recording->take(), std::vector<std::string>{"clear"});
    EXPECT_TRUE(recording->timed);
}

}  // namespace SettingsHandlerKit
