#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>

#include "SettingsHandlerTesting/kit/FakeValueObserver.h"
#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "kit/support/OpenStorage.h"
#include "storage/FileNames.h"
#include "storage/LogOut.h"
#include "support/Files.h"
#include "support/Sanitizers.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

namespace {

using TestSupport::contentOf;
using Names = std::vector<std::string>;

/// Every stored value consists of this word, so that any part of a value that is left can be found.
const std::string word = "Secret";

std::string secret(std::size_t length) {
    std::string text;
    while (text.size() < length) {
        text += word;
    }
    return text;
}

void write(const std::string& file, const std::string& content) {
    std::ofstream(file, std::ios::binary) << content;
}

}  // namespace

/// A used device: its database and all files that can be beside it hold values.
class LogOutTest : public ::testing::Test {
protected:
    /// The storage of a running host.
    struct Running {
        explicit Running(LogOutTest& test)
            : storage(test.file, test.disk), database(storage.database()), state(storage.state("simulation")) {
            storage.observeValues(test.removed);
        }

        std::string get(const std::string& key) { return storage.get(key); }

        SettingsHostTests::OpenStorage storage;
        Database& database;
        std::unique_ptr<StateStore> state;
    };

    static void SetUpTestSuite() { used = std::make_unique<TestSupport::TemporaryDirectory>(); }
    static void TearDownTestSuite() { used.reset(); }

    LogOutTest() {
        if (!std::filesystem::exists(*used / "settings.db")) {
            use();
        }
        begin();
    }

    /// Starts over with a copy of the used device.
    void begin() {
        folder = std::make_unique<TestSupport::TemporaryDirectory>(TestSupport::memoryFolder());
        std::filesystem::copy(used->path(), folder->path());
        file = *folder / "settings.db";
        disk->watch(folder->path());
        removed->take();
        log.take();
    }

    Names files() const { return TestSupport::namesIn(folder->path()); }

    /// The files that hold parts of values.
    Names filesWithSecrets() const {
        Names names;
        for (const auto& name : files()) {
            const bool isFile = std::filesystem::is_regular_file(*folder / name);
            if (isFile && contentOf(*folder / name).find(word) != std::string::npos) {
                names.push_back(name);
            }
        }
        return names;
    }

    void expectAllStored(Running& running) const {
        EXPECT_EQ(running.get("deviceName"), word + "Room");
        EXPECT_TRUE(running.get("companionDevice") == secret(30000));
        EXPECT_TRUE(running.get(word + "Key") == secret(300));
        EXPECT_EQ(running.get("orliaLocale.unusable"), secret(20));
    }

    void expectAllErased(Running& running) const {
        EXPECT_EQ(running.storage.health().keys, 0U);
        EXPECT_EQ(filesWithSecrets(), Names());
        EXPECT_FALSE(std::filesystem::exists(logOutMarkerName(file)));
        EXPECT_EQ(running.database.file(), file);
    }

    /// Expects that a refused log-out said so and changed no value, now and after a restart, which restores `before`.
    void expectNothingLost(std::unique_ptr<Running> running, const Names& before) {
        EXPECT_EQ(removed->take(), Names()) << "no key is reported as removed";
        const Names lines = log.take();
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines[0].rfind("3 settings-host:cannot clear the storage: ", 0), 0U) << lines[0];
        expectAllStored(*running);
        running.reset();
        running = std::make_unique<Running>(*this);
        expectAllStored(*running);
        EXPECT_EQ(files(), before);
    }

    /// Expects that an accepted log-out is complete after a retry or a restart, and keeps a value stored in between.
    /// Returns: whether it was reported as incomplete at first.
    bool expectCompletion(std::unique_ptr<Running> running, bool isRetried) {
        EXPECT_EQ(removed->take().size(), 4U);
        const Names lines = log.take();
        EXPECT_LE(lines.size(), 1U);
        const bool isLate = !lines.empty() && lines[0].find("a log-out is incomplete") != std::string::npos;
        EXPECT_TRUE(isLate || filesWithSecrets().empty());
        EXPECT_EQ(running->storage.health().keys, 0U);
        EXPECT_TRUE(running->storage.setValue("deviceName", "new"));
        if (isRetried) {
            finishLogOut(running->database);
        } else {
            running.reset();
            running = std::make_unique<Running>(*this);
        }
        EXPECT_EQ(running->get("deviceName"), "new");
        EXPECT_TRUE(running->storage.removeValue("deviceName"));
        expectAllErased(*running);
        EXPECT_EQ(log.take(), Names());
        return isLate;
    }

    bool holdsEveryBackup() const {
        return contentOf(backupName(file, 1)) == contentOf(*used / "settings.db.backup.1") &&
               contentOf(backupName(file, 2)) == contentOf(*used / "settings.db.backup.2");
    }

    enum class Loss { NONE, DAMAGED, MISSING, MISSING_WITH_LOG };

    void lose(Loss kind) {
        if (kind == Loss::DAMAGED) {
            write(file, contentOf(file).replace(0, 100, 100, 'x'));
        } else if (kind != Loss::NONE) {
            std::filesystem::remove(file);
        }
        if (kind == Loss::MISSING) {
            std::filesystem::remove(file + "-wal");
        }
        disk->watch(folder->path());
    }

    /// Returns: whether the log-out was answered.
    bool logOutWithPowerCutAt(long call, std::mt19937& random) {
        bool answered = false;
        {
            Running running(*this);
            disk->cutPowerAt(call);
            answered = running.storage.clearStorage();
        }
        disk->restorePower(random);
        return answered;
    }

    void startWithPowerCutAt(long call, std::mt19937& random) {
        disk->cutPowerAt(call);
        try {
            const Running running(*this);
        } catch (const DatabaseError&) {
            // Expected: the start fails.
        }
        disk->restorePower(random);
    }

    /// The number of calls of a log-out without faults.
    long countCalls() {
        begin();
        Running running(*this);
        disk->work();
        EXPECT_TRUE(running.storage.clearStorage());
        const long calls = disk->calls();
        EXPECT_GT(calls, 50);
        return calls;
    }

    static const Names foreignFiles;
    static std::unique_ptr<TestSupport::TemporaryDirectory> used;

    SettingsHostTests::LogRecording log;
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    std::unique_ptr<TestSupport::TemporaryDirectory> folder;
    std::string file;
    SettingsHandlerTesting::Journal journal;
    std::shared_ptr<SettingsHandlerTesting::FakeValueObserver> removed =
        std::make_shared<SettingsHandlerTesting::FakeValueObserver>(journal);

private:
    void use() {
        file = *used / "settings.db";
        {
            Running running(*this);
            EXPECT_TRUE(running.state->save("locale", "kept"));
            // Overwritten and removed values stay in free pages and in free parts of other pages.
            for (std::size_t length = 10; length < 40000; length = length * 3 / 2) {
                EXPECT_TRUE(running.storage.setValue("companionDevice", secret(length)));
                EXPECT_TRUE(running.storage.setValue("key" + std::to_string(length), secret(length / 3)));
            }
            for (std::size_t length = 10; length < 40000; length = length * 3 / 2) {
                EXPECT_TRUE(running.storage.removeValue("key" + std::to_string(length)));
            }
            EXPECT_TRUE(running.storage.setValue("companionDevice", secret(30000)));
            EXPECT_TRUE(running.storage.setValue("deviceName", word + "Room"));
            EXPECT_TRUE(running.storage.setValue(word + "Key", secret(300)));
            EXPECT_TRUE(running.storage.setValue("orliaLocale", secret(20)));
            EXPECT_EQ(running.storage.setAside("orliaLocale"), "orliaLocale.unusable");
            for (int generation = 0; generation < backupGenerations; ++generation) {
                running.storage.backupNow();
            }
            std::filesystem::copy_file(file + "-wal", *used / "settings.db.damaged.12-wal");
        }
        std::filesystem::copy_file(file, file + ".damaged.12");
        std::filesystem::copy_file(file, file + ".backup.new");
        for (const auto* name : {".damaged", ".damaged-wal", ".damaged-journal", ".damaged-shm", ".restoring",
                                 ".restoring-wal", ".backup.new-wal", ".backup.new-journal"}) {
            write(file + name, secret(3000));
        }
        for (const auto& name : foreignFiles) {
            write(*used / name, "foreign");
        }
    }
};

const Names LogOutTest::foreignFiles{"my-settings.db.damaged",  "settings.db.2",      "settings.db.backup",
                                     "settings.db.backup.copy", "settings.db.damage", "settings.db.damaged.old"};
std::unique_ptr<TestSupport::TemporaryDirectory> LogOutTest::used;

TEST_F(LogOutTest, LeavesNothingOfAnyValueInAnyFile) {
    Running running(*this);
    EXPECT_EQ(filesWithSecrets().size(), 14U) << "the files hold values before the log-out";
    expectAllStored(running);
    EXPECT_TRUE(running.storage.clearStorage());
    expectAllErased(running);
    Names expected = foreignFiles;
    expected.insert(expected.end(), {"settings.db", "settings.db-wal", "settings.db.backup.1"});
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(files(), expected);
    EXPECT_EQ(removed->take(), (Names{"SecretKey", "companionDevice", "deviceName", "orliaLocale.unusable"}));
    EXPECT_EQ(running.state->load("locale"), "kept");
    EXPECT_EQ(log.take(), Names());
}

TEST_F(LogOutTest, IsPermanentAndLaterValuesAreKept) {
    {
        Running running(*this);
        EXPECT_TRUE(running.storage.clearStorage());
        EXPECT_TRUE(running.storage.setValue("deviceName", "Den"));
    }
    {
        Running running(*this);
        EXPECT_EQ(running.get("deviceName"), "Den");
        EXPECT_EQ(running.storage.health().keys, 1U);
    }
    std::filesystem::remove(file);
    Running running(*this);
    expectAllErased(running);
    EXPECT_EQ(running.storage.recovery().source, Recovery::Source::BACKUP);
    EXPECT_EQ(running.state->load("locale"), "kept") << "the new backup holds the other tables";
}

TEST_F(LogOutTest, NeedsLittleDiskSpaceHoweverMuchIsStored) {
    Running running(*this);
    for (int key = 0; key < 15; ++key) {
        ASSERT_TRUE(running.storage.setValue("key" + std::to_string(key), secret(60000)));
    }
    running.database.emptyWal();
    KeyValueTable table(running.database, settingsTable);
    beginLogOut(running.database, [&] { table.clear(); });
    EXPECT_LT(std::filesystem::file_size(file + "-wal"), 20U * 4120U) << "a log-out must work on a full disk";
    finishLogOut(running.database);
    expectAllErased(running);
}

TEST_F(LogOutTest, ABackupInProgressIsCancelled) {
    Running running(*this);
    EXPECT_TRUE(running.storage.beginBackup(std::chrono::seconds(-1)));
    EXPECT_TRUE(running.storage.continueBackup(8));
    EXPECT_TRUE(running.storage.clearStorage());
    EXPECT_FALSE(running.storage.continueBackup(8));
    expectAllErased(running);
}

TEST_F(LogOutTest, AFileThatCannotBeErasedIsRetriedAndAllOthersAreErased) {
    // A folder cannot be removed like a file.
    const std::string stubborn = file + ".damaged.3";
    std::filesystem::create_directories(stubborn + "/inside");
    Running running(*this);
    EXPECT_TRUE(running.storage.clearStorage());
    EXPECT_EQ(filesWithSecrets(), Names());
    const std::string line =
        "3 settings-host:a log-out is incomplete: removed values are still on the disk (retried hourly and at the next "
        "start): cannot remove " +
        stubborn + ": Is a directory";
    EXPECT_EQ(log.take(), Names{line});
    EXPECT_TRUE(running.storage.setValue("deviceName", "Den"));
    finishLogOut(running.database);
    EXPECT_EQ(log.take(), Names{line});
    std::filesystem::remove_all(stubborn);
    finishLogOut(running.database);
    EXPECT_EQ(log.take(), Names());
    EXPECT_FALSE(std::filesystem::exists(logOutMarkerName(file)));
    EXPECT_EQ(running.get("deviceName"), "Den");
    EXPECT_EQ(filesWithSecrets(), Names());
}

TEST_F(LogOutTest, AStartWithoutOneDoesNotReportOneWhenTheDiskRemovesNothing) {
    class KeepingDisk : public Disk {
        std::error_code removeFile(const std::string& /*file*/) override {
            return std::make_error_code(std::errc::io_error);
        }
    };
    const Storage storage(file, std::make_shared<KeepingDisk>());
    EXPECT_EQ(log.take(), Names());
}

TEST_F(LogOutTest, AFailedLogOutLeavesNoTransactionOpen) {
    {
        Running running(*this);
        running.database.execute(
            "CREATE TRIGGER keep BEFORE DELETE ON settings BEGIN SELECT RAISE(ABORT, 'kept'); END");
        EXPECT_FALSE(running.storage.clearStorage());
        EXPECT_EQ(log.take(), Names{"3 settings-host:cannot clear the storage: database: kept"});
        EXPECT_EQ(removed->take(), Names());
        EXPECT_TRUE(running.storage.setValue("after", "it"));
    }
    Running running(*this);
    expectAllStored(running);
    EXPECT_EQ(running.get("after"), "it");
    EXPECT_TRUE(holdsEveryBackup());
}

TEST_F(LogOutTest, IsCompleteOrLosesNothingWhicheverCallFails) {
    using Fault = void (SettingsHostTests::FaultyDisk::*)(long);
    const std::vector<std::pair<std::string, Fault>> faults{{"once", &SettingsHostTests::FaultyDisk::failOnce},
                                                            {"from", &SettingsHostTests::FaultyDisk::failFrom},
                                                            {"full", &SettingsHostTests::FaultyDisk::fillUpFrom}};
    const long calls = countCalls();
    int refused = 0;
    int late = 0;
    for (const auto& [name, fault] : faults) {
        for (long call = 1; call <= calls; call += TestSupport::sanitized ? 7 : 1) {
            SCOPED_TRACE(name + " " + std::to_string(call) + " of " + std::to_string(calls));
            begin();
            auto running = std::make_unique<Running>(*this);
            const Names before = files();
            (*disk.*fault)(call);
            const bool done = running->storage.clearStorage();
            EXPECT_TRUE(disk->hasFailed() || name == "full");
            disk->work();
            if (done) {
                late += expectCompletion(std::move(running), call % 2 == 0) ? 1 : 0;
            } else {
                ++refused;
                EXPECT_TRUE(name == "from" || files() == before);
                expectNothingLost(std::move(running), before);
            }
            ASSERT_FALSE(HasFailure());
        }
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(late, 0);
}

TEST_F(LogOutTest, IsCompleteOrLosesNothingWheneverThePowerIsCut) {
    const long calls = countCalls();
    int done = 0;
    int undone = 0;
    for (long call = 1; call <= calls; call += TestSupport::sanitized ? 7 : 1) {
        for (const auto loss : {Loss::NONE, Loss::DAMAGED, Loss::MISSING, Loss::MISSING_WITH_LOG}) {
            const auto kind = static_cast<unsigned>(loss);
            const bool isCutAgain = (static_cast<unsigned>(call) + kind) % 2 == 1;
            SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(calls) + ", loss " +
                         std::to_string(kind) + (isCutAgain ? ", cut again" : ""));
            std::mt19937 random(static_cast<unsigned>(call) * 4 + kind);
            begin();
            const bool answered = logOutWithPowerCutAt(call, random);
            lose(loss);
            if (isCutAgain) {
                startWithPowerCutAt(1 + static_cast<long>(random() % 150), random);
            }
            Running running(*this);
            EXPECT_FALSE(std::filesystem::exists(logOutMarkerName(file)));
            if (answered || running.get("deviceName").empty()) {
                ++done;
                expectAllErased(running);
            } else {
                ++undone;
                expectAllStored(running);
                EXPECT_TRUE(holdsEveryBackup());
            }
            ASSERT_FALSE(HasFailure());
        }
    }
    EXPECT_GT(done, 0);
    EXPECT_GT(undone, 0);
}

}  // namespace SettingsHandlerKit
