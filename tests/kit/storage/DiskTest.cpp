#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "SettingsHandlerKit/Disk.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

using TestSupport::contentOf;
using TestSupport::modeOf;

class DiskTest : public ::testing::Test {
protected:
    std::string write(const std::string& name, const std::string& content) {
        std::ofstream(folder / name) << content;
        return folder / name;
    }

    const std::error_code success{0, std::generic_category()};
    TestSupport::TemporaryDirectory folder;
    Disk disk;
};

TEST_F(DiskTest, CreatesPrivateFilesAndFolders) {
    const mode_t before = ::umask(0);
    EXPECT_EQ(disk.createFolder(folder / "new"), success);
    EXPECT_EQ(disk.createFile(folder / "new/file"), success);
    EXPECT_EQ(disk.copyFile(write("source", "text"), folder / "new/copy"), success);
    ::umask(before);
    EXPECT_EQ(modeOf(folder / "new"), 0700U);
    EXPECT_EQ(modeOf(folder / "new/file"), 0600U);
    EXPECT_EQ(modeOf(folder / "new/copy"), 0600U);
    EXPECT_EQ(contentOf(folder / "new/copy"), "text");
}

TEST_F(DiskTest, LeavesAnExistingFileAsItIs) {
    const std::string file = write("file", "old");
    EXPECT_EQ(disk.createFile(file), success);
    EXPECT_EQ(disk.copyFile(write("source", "new"), file), std::errc::file_exists);
    EXPECT_EQ(contentOf(file), "old");
    EXPECT_EQ(disk.createFolder(folder.path()), std::errc::file_exists);
}

TEST_F(DiskTest, SaysWhatFilesThereAre) {
    const auto before = std::chrono::system_clock::now() - std::chrono::minutes(1);
    const std::string file = write("file", "text");
    ASSERT_TRUE(disk.find(file));
    EXPECT_EQ(disk.find(file)->size, 4U);
    EXPECT_GT(disk.find(file)->changed, before);
    std::filesystem::create_symlink("nowhere", folder / "link");
    EXPECT_EQ(disk.find(folder / "link")->size, 0U);
    EXPECT_EQ(disk.find(folder.path())->size, 0U);
    EXPECT_FALSE(disk.find(folder / "missing"));
    std::vector<std::string> names;
    EXPECT_EQ(disk.list(folder.path(), names), success);
    EXPECT_THAT(names, testing::UnorderedElementsAre("file", "link"));
    EXPECT_EQ(disk.list(folder / "missing", names), std::errc::no_such_file_or_directory);
    EXPECT_EQ(disk.tryOpen(file, true), success);
    EXPECT_EQ(disk.tryOpen(folder / "missing", false), std::errc::no_such_file_or_directory);
    EXPECT_EQ(disk.tryOpen(folder.path(), true), std::errc::is_a_directory);
}

TEST_F(DiskTest, RenamesOverAnExistingFileAndRemoves) {
    EXPECT_EQ(disk.renameFile(write("from", "new"), write("to", "old")), success);
    EXPECT_EQ(contentOf(folder / "to"), "new");
    EXPECT_EQ(disk.removeFile(folder / "to"), success);
    EXPECT_TRUE(TestSupport::namesIn(folder.path()).empty());
}

TEST_F(DiskTest, ReturnsTheErrorsOfTheSystem) {
    const std::string absent = folder / "absent";
    EXPECT_EQ(disk.createFolder(absent + "/inside"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(disk.createFile(absent + "/inside"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(disk.copyFile(absent, folder / "copy"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(disk.renameFile(absent, folder / "to"), std::errc::no_such_file_or_directory);
    EXPECT_EQ(disk.removeFile(absent), std::errc::no_such_file_or_directory);
    EXPECT_EQ(disk.sync(absent), std::errc::no_such_file_or_directory);
}

TEST_F(DiskTest, SyncsFilesAndFolders) {
    EXPECT_EQ(disk.sync(write("file", "text")), success);
    EXPECT_EQ(disk.sync(folder.path()), success);
    EXPECT_EQ(disk.sync("/dev/null"), std::errc::invalid_argument) << "fsync refuses a device";
}

}  // namespace SettingsHandlerKit
