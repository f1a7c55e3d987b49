#include <filesystem>
#include <random>

#include "SettingsHandlerKit/Storage.h"
#include "SettingsHandlerKit/StorageFiles.h"
#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

class StorageFilesTest : public ::testing::Test {
protected:
    /// Leaves a database, two backups and a database that was set aside.
    void use() {
        {
            Storage storage(file, disk);
            EXPECT_TRUE(storage.setValue("deviceName", "Den"));
            storage.backupNow();
            storage.backupNow();
        }
        std::filesystem::copy_file(file, file + ".damaged");
    }

    std::vector<std::string> names() const { return TestSupport::namesIn(folder.path()); }

    SettingsHostTests::LogRecording log;
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
    TestSupport::TemporaryDirectory folder{TestSupport::memoryFolder()};
    std::string file = folder / "settings.db";
};

TEST_F(StorageFilesTest, AreRemovedWithTheDatabaseLast) {
    use();
    StorageFiles files(file, disk);
    EXPECT_EQ(files.files(),
              (std::vector<std::string>{file + ".backup.1", file + ".backup.2", file + ".damaged", file}));
    files.remove();
    EXPECT_EQ(names(), std::vector<std::string>());
    EXPECT_EQ(StorageFiles(file, disk).files(), std::vector<std::string>());
}

TEST_F(StorageFilesTest, OfAStorageInUseAreRefused) {
    use();
    const auto before = names();
    const Storage storage(file, disk);
    EXPECT_THROW(StorageFiles(file, disk), DatabaseError);
    storage.recovery();
    EXPECT_EQ(names().size(), before.size() + 1) << "and the log of the storage";
}

TEST_F(StorageFilesTest, WheneverThePowerIsCutARemovalThatReturnedIsComplete) {
    disk->watch(folder.path());
    use();
    disk->work();
    StorageFiles(file, disk).remove();
    const long calls = disk->calls();
    for (long call = 1; call <= calls + 1; ++call) {
        SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(calls));
        std::mt19937 random(static_cast<unsigned>(call));
        use();
        disk->watch(folder.path());
        disk->cutPowerAt(call);
        bool removed = false;
        try {
            StorageFiles(file, disk).remove();
            removed = true;
        } catch (const DatabaseError&) {
            // Power cut before the end.
        }
        disk->restorePower(random);
        EXPECT_EQ(removed, call > calls);
        EXPECT_TRUE(!removed || names().empty());
        StorageFiles(file, disk).remove();
        EXPECT_EQ(names(), std::vector<std::string>()) << "repeated after the cut";
    }
    EXPECT_GT(calls, 8);
}

}  // namespace SettingsHandlerKit
