#include <gtest/gtest.h>

#include "SettingsHandlerKit/Storage.h"
#include "kit/support/LogRecording.h"
#include "simulation/DiskWithFaults.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHost {

using SettingsHandlerKit::Storage;

class DiskWithFaults : public ::testing::Test {
protected:
    std::string value() {
        std::string read;
        storage.getValue("deviceName", read);
        return read;
    }
    std::vector<long> takeSlept() { return std::exchange(slept, {}); }

    SettingsHostTests::LogRecording log;
    TestSupport::TemporaryDirectory folder;
    std::vector<long> slept;
    std::shared_ptr<Faults> faults = std::make_shared<Faults>();
    Storage storage{folder / "s.db", makeDiskWithFaults(faults, [this](std::chrono::milliseconds time) {
                        slept.push_back(time.count());
                    })};
};

TEST_F(DiskWithFaults, IsADiskWithoutThem) {
    EXPECT_TRUE(storage.setValue("deviceName", "Den"));
    EXPECT_EQ(value(), "Den");
    EXPECT_EQ(takeSlept(), std::vector<long>{});
}

TEST_F(DiskWithFaults, FullTakesNothingNewUntilThereIsRoom) {
    storage.setValue("deviceName", "Den");
    faults->switchOn(Fault::STORAGE_FULL);
    log.take();
    EXPECT_FALSE(storage.setValue("deviceName", "Attic"));
    EXPECT_EQ(log.take(), std::vector<std::string>{
                              "3 settings-host:cannot store 'deviceName': database: database or disk is full"});
    EXPECT_EQ(value(), "Den");
    EXPECT_THROW(storage.backupNow(), SettingsHandlerKit::DatabaseError);
    faults->switchOff(Fault::STORAGE_FULL);
    EXPECT_TRUE(storage.setValue("deviceName", "Attic"));
    EXPECT_EQ(value(), "Attic");
}

TEST_F(DiskWithFaults, FailingReadsNothingEither) {
    storage.setValue("deviceName", "Den");
    faults->switchOn(Fault::STORAGE_FAILING);
    log.take();
    EXPECT_FALSE(storage.setValue("deviceName", "Attic"));
    EXPECT_EQ(value(), "");
    EXPECT_EQ(log.take(),
              (std::vector<std::string>{"3 settings-host:cannot store 'deviceName': database: disk I/O error",
                                        "3 settings-host:cannot read 'deviceName': database: disk I/O error"}));
    faults->switchOff(Fault::STORAGE_FAILING);
    EXPECT_EQ(value(), "Den");
}

TEST_F(DiskWithFaults, SlowWaitsAtEachFlush) {
    storage.setValue("deviceName", "Den");
    faults->switchOn(Fault::STORAGE_SLOW, 300);
    EXPECT_TRUE(storage.setValue("deviceName", "Attic"));
    EXPECT_EQ(takeSlept(), std::vector<long>{300}) << "a change has one flush";
    EXPECT_EQ(value(), "Attic");
    EXPECT_EQ(takeSlept(), std::vector<long>{}) << "a read has none";
    storage.beginTransaction();
    storage.setValue("deviceName", "Den");
    storage.setValue("friendlyName", "Telly");
    EXPECT_EQ(takeSlept(), std::vector<long>{});
    EXPECT_TRUE(storage.commitTransaction());
    EXPECT_EQ(takeSlept(), std::vector<long>{300}) << "a batch has one";
    faults->switchOff(Fault::STORAGE_SLOW);
    storage.setValue("deviceName", "Attic");
    EXPECT_EQ(takeSlept(), std::vector<long>{});
}

}  // namespace SettingsHost
