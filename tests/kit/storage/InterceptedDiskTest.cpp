#include <filesystem>

#include <gtest/gtest.h>

#include "SettingsHandlerKit/InterceptedDisk.h"
#include "SettingsHandlerKit/Storage.h"
#include "kit/support/LogRecording.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

using Operation = InterceptedDisk::Operation;

class InterceptedDiskTest : public ::testing::Test {
protected:
    std::vector<std::string> names() {
        return std::filesystem::exists(folder / "new") ? TestSupport::namesIn(folder / "new")
                                                       : std::vector<std::string>{};
    }
    std::vector<Operation> take() { return std::exchange(operations, {}); }

    SettingsHostTests::LogRecording log;
    TestSupport::TemporaryDirectory folder;
    std::vector<Operation> operations;
    std::error_code error;
    std::shared_ptr<InterceptedDisk> disk = std::make_shared<InterceptedDisk>([this](Operation operation) {
        operations.push_back(operation);
        return error;
    });
};

TEST_F(InterceptedDiskTest, IsAskedBeforeEachOperationOnFiles) {
    const std::string file = folder / "new/file";
    const std::vector<std::pair<Operation, std::function<std::error_code()>>> steps{
        {Operation::WRITE, [&] { return disk->createFolder(folder / "new"); }},
        {Operation::WRITE, [&] { return disk->createFile(file); }},
        {Operation::WRITE, [&] { return disk->copyFile(file, file + "2"); }},
        {Operation::CHANGE, [&] { return disk->renameFile(file, file + "3"); }},
        {Operation::CHANGE, [&] { return disk->removeFile(file + "2"); }},
        {Operation::FLUSH, [&] { return disk->sync(folder / "new"); }},
    };
    for (const auto& [operation, execute] : steps) {
        const auto before = names();
        error = std::make_error_code(std::errc::io_error);
        EXPECT_EQ(execute(), error);
        EXPECT_EQ(names(), before) << "it was done";
        error = {};
        EXPECT_FALSE(execute());
        EXPECT_EQ(take(), (std::vector<Operation>{operation, operation}));
    }
    EXPECT_EQ(names(), std::vector<std::string>{"file3"});
}

TEST_F(InterceptedDiskTest, IsAskedBeforeEachOperationOfTheDatabase) {
    Storage storage(folder / "s.db", disk);
    EXPECT_TRUE(storage.setValue("deviceName", "Den"));
    take();
    // The header of a page and the page in the log, then the flush of the log.
    EXPECT_TRUE(storage.setValue("deviceName", "Attic"));
    EXPECT_EQ(take(), (std::vector<Operation>{Operation::WRITE, Operation::WRITE, Operation::FLUSH}));
    error = std::make_error_code(std::errc::no_space_on_device);
    EXPECT_FALSE(storage.setValue("deviceName", "Kitchen"));
    EXPECT_EQ(storage.health().lastFailure, "database: database or disk is full");
    error = std::make_error_code(std::errc::io_error);
    EXPECT_FALSE(storage.setValue("deviceName", "Kitchen"));
    EXPECT_EQ(storage.health().lastFailure, "database: disk I/O error");
    error = {};
    std::string value;
    storage.getValue("deviceName", value);
    EXPECT_EQ(value, "Attic");
    EXPECT_TRUE(storage.setValue("deviceName", "Kitchen"));
}

TEST_F(InterceptedDiskTest, LeavesTheFilesThatTheSystemsDiskLeaves) {
    { Storage(folder / "plain/s.db").setValue("deviceName", "Den"); }
    { Storage(folder / "intercepted/s.db", disk).setValue("deviceName", "Den"); }
    EXPECT_EQ(TestSupport::namesIn(folder / "intercepted"), TestSupport::namesIn(folder / "plain"));
    EXPECT_EQ(TestSupport::contentOf(folder / "intercepted/s.db"), TestSupport::contentOf(folder / "plain/s.db"));
}

TEST_F(InterceptedDiskTest, LiesOverAnotherDisk) {
    std::vector<Operation> below;
    const auto lower = std::make_shared<InterceptedDisk>([&](Operation operation) {
        below.push_back(operation);
        return std::error_code();
    });
    const auto upper = std::make_shared<InterceptedDisk>(
        [this](Operation operation) {
            operations.push_back(operation);
            return error;
        },
        lower);
    Storage storage(folder / "s.db", upper);
    EXPECT_TRUE(storage.setValue("deviceName", "Den"));
    EXPECT_EQ(below, take());
    EXPECT_FALSE(below.empty());
    error = std::make_error_code(std::errc::io_error);
    below.clear();
    EXPECT_FALSE(storage.setValue("deviceName", "Attic"));
    EXPECT_TRUE(below.empty()) << "done in spite of the error";
}

TEST_F(InterceptedDiskTest, SeveralAreIndependent) {
    InterceptedDisk other([](Operation) { return std::error_code(); });
    EXPECT_NE(other.databaseLayer(), disk->databaseLayer());
    Storage storage(folder / "s.db", disk);
    EXPECT_TRUE(storage.setValue("deviceName", "Den"));
}

}  // namespace SettingsHandlerKit
