#include <filesystem>
#include <fstream>

#include "SettingsHandlerKit/DatabaseError.h"
#include "kit/support/FaultyDisk.h"
#include "storage/Files.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

namespace {

/// Runs `action` in a new folder, which holds the file "old", with a fault at each call in turn. Each fault must be
/// reported. Returns: the number of calls that `action` makes.
long callsThatAreReported(const std::function<void(Disk&, const TestSupport::TemporaryDirectory&)>& action) {
    SettingsHostTests::FaultyDisk disk;
    for (long call = 1;; ++call) {
        const TestSupport::TemporaryDirectory folder;
        std::ofstream(folder / "old") << "content";
        disk.watch(folder.path());
        disk.failOnce(call);
        bool reported = false;
        try {
            action(disk, folder);
        } catch (const DatabaseError&) {
            reported = true;
        }
        EXPECT_EQ(reported, disk.hasFailed()) << "call " << call;
        if (!disk.hasFailed()) {
            return call - 1;
        }
    }
}

}  // namespace

TEST(Files, EveryOperationIsSyncedAndItsFailureReported) {
    EXPECT_EQ(callsThatAreReported([](auto& disk, const auto& folder) { createFolders(disk, folder / "new"); }), 1)
        << "sync the parent folder";
    EXPECT_EQ(callsThatAreReported([](auto& disk, const auto& folder) { createFile(disk, folder / "new"); }), 2)
        << "create, sync the folder";
    EXPECT_EQ(
        callsThatAreReported([](auto& disk, const auto& folder) { moveFile(disk, folder / "old", folder / "new"); }), 2)
        << "rename, sync the folder";
    EXPECT_EQ(callsThatAreReported([](auto& disk, const auto& folder) { removeFile(disk, folder / "old"); }), 2)
        << "remove, sync the folder";
    EXPECT_EQ(
        callsThatAreReported([](auto& disk, const auto& folder) { copyFile(disk, folder / "old", folder / "new"); }), 5)
        << "remove what is there, create, fill, sync the file, sync the folder";
}

TEST(Files, TellWhatCouldNotBeSynced) {
    SettingsHostTests::FaultyDisk disk;
    const TestSupport::TemporaryDirectory folder;
    disk.watch(folder.path());
    disk.failOnce(2);
    try {
        createFile(disk, folder / "new");
        FAIL() << "nothing was reported";
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.what(), "fsync failed for " + folder.path().string() + ": Input/output error");
    }
}

}  // namespace SettingsHandlerKit
