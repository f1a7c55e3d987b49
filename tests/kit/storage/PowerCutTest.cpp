#include <filesystem>
#include <map>
#include <random>

#include "SettingsHandlerKit/Storage.h"
#include "kit/support/FaultyDisk.h"
#include "kit/support/LogRecording.h"
#include "support/Sanitizers.h"
#include "support/TemporaryDirectory.h"

namespace SettingsHandlerKit {

namespace {

using Values = std::map<std::string, std::string>;

/// The file of a database on a disk of its own.
struct FileOnDisk {
    explicit FileOnDisk(unsigned seed) : random(seed) { disk->watch(folder.path()); }

    std::mt19937 random;
    TestSupport::TemporaryDirectory folder{TestSupport::memoryFolder()};
    std::string file = folder / "settings.db";
    SettingsHostTests::LogRecording log;
    std::shared_ptr<SettingsHostTests::FaultyDisk> disk = std::make_shared<SettingsHostTests::FaultyDisk>();
};

/// A device whose power is cut repeatedly while its settings are changed.
class Device : FileOnDisk {
public:
    using FileOnDisk::FileOnDisk;

    /// Starts, changes settings until the power is cut, and restores the power.
    /// Returns: true when the power was cut during a change.
    bool run() {
        disk->cutPowerAt(1 + static_cast<long>(random() % (random() % 4 == 0 ? 400 : 60)));
        bool cutInsideAChange = false;
        try {
            Storage storage(file, disk);
            while (change(storage)) {
            }
            cutInsideAChange = true;
        } catch (const DatabaseError&) {
            // Power cut during the start.
        }
        EXPECT_TRUE(disk->hasFailed());
        log.take();
        disk->restorePower(random);
        return cutInsideAChange;
    }

    /// Expects every confirmed change, and at most the one change that was in progress.
    void expectNothingLost() {
        Storage storage(file, disk);
        EXPECT_EQ(storage.recovery().source, Recovery::Source::NOT_NEEDED) << "a sound database was taken for damaged";
        const Values found = read(storage);
        EXPECT_TRUE(found == confirmed || found == inProgress)
            << "found " << summary(found) << ", confirmed " << summary(confirmed) << ", in progress "
            << summary(inProgress);
        confirmed = found;
        inProgress = found;
    }

private:
    /// Returns: true when the change was confirmed.
    bool change(Storage& storage) {
        const std::string key = "key" + std::to_string(random() % 12);
        const auto kind = static_cast<unsigned>(random() % 20);
        bool done = false;
        if (kind == 0) {
            inProgress.clear();
            done = storage.clearStorage();
        } else if (kind < 4) {
            inProgress.erase(key);
            done = storage.removeValue(key);
        } else {
            const std::string value(random() % (kind < 8 ? 9000 : 60), static_cast<char>('a' + random() % 26));
            inProgress[key] = std::to_string(++counter) + value;
            done = storage.setValue(key, inProgress[key]);
        }
        if (done) {
            confirmed = inProgress;
        }
        return done;
    }

    static std::string summary(const Values& values) {
        std::string text;
        for (const auto& [key, value] : values) {
            text += key + "=" + value.substr(0, 12) + "(" + std::to_string(value.size()) + ") ";
        }
        return text;
    }

    static Values read(Storage& storage) {
        Values values;
        for (int number = 0; number < 12; ++number) {
            const std::string key = "key" + std::to_string(number);
            std::string value;
            storage.getValue(key, value);
            if (!value.empty()) {
                values[key] = value;
            }
        }
        return values;
    }

    Values confirmed;
    Values inProgress;
    unsigned long counter = 0;
};

std::string nameIn(Storage& storage) {
    std::string name;
    storage.getValue("deviceName", name);
    return name;
}

/// The value of "deviceName" in a backup.
std::string valueIn(const std::string& backup) {
    const TestSupport::TemporaryDirectory folder(TestSupport::memoryFolder());
    std::filesystem::copy_file(backup, folder / "settings.db");
    Storage storage(folder / "settings.db");
    EXPECT_EQ(storage.recovery().source, Recovery::Source::NOT_NEEDED) << "the backup is damaged";
    return nameIn(storage);
}

}  // namespace

TEST(PowerCutTest, NothingThatWasAnsweredIsLost) {
    constexpr unsigned cuts = TestSupport::sanitized ? 200 : 5000;
    constexpr unsigned cutsOfADevice = 25;
    unsigned insideAChange = 0;
    for (unsigned seed = 0; seed < cuts / cutsOfADevice; ++seed) {
        Device device(seed);
        for (unsigned cut = 0; cut < cutsOfADevice; ++cut) {
            SCOPED_TRACE("device " + std::to_string(seed) + ", cut " + std::to_string(cut));
            insideAChange += device.run() ? 1 : 0;
            ASSERT_NO_THROW(device.expectNothingLost());
            ASSERT_FALSE(::testing::Test::HasFailure());
        }
    }
    EXPECT_GT(insideAChange, cuts / 4) << "most cuts came during the start";
    RecordProperty("cuts", std::to_string(cuts));
    RecordProperty("cutsInsideAChange", std::to_string(insideAChange));
}

TEST(PowerCutTest, WhatAStartRecoversFromTheLogIsNotLostByTheNextCut) {
    unsigned recovered = 0;
    for (unsigned seed = 0; seed < 20; ++seed) {
        FileOnDisk on(seed);
        {
            Storage storage(on.file, on.disk);
            // The process ends at some call of a change: what it wrote is known to the system.
            on.disk->failFrom(1 + static_cast<long>(seed % 5));
            EXPECT_FALSE(storage.setValue("deviceName", "Den") && on.disk->hasFailed());
        }
        on.disk->work();
        std::string shown;
        {
            Storage storage(on.file, on.disk);
            shown = nameIn(storage);
            on.disk->cutPowerAt(1);
        }
        on.disk->restorePower(on.random);
        Storage storage(on.file, on.disk);
        EXPECT_EQ(nameIn(storage), shown) << "seed " << seed;
        recovered += shown == "Den" ? 1 : 0;
    }
    EXPECT_GT(recovered, 0U);
}

TEST(PowerCutTest, AfterACleanStopNoWriteThatFailedComesBack) {
    unsigned refused = 0;
    for (unsigned seed = 0; seed < 40; ++seed) {
        FileOnDisk on(seed);
        std::string stored;
        {
            Storage storage(on.file, on.disk);
            EXPECT_TRUE(storage.setValue("deviceName", "Den"));
            on.disk->failOnce(1 + static_cast<long>(seed % 5));
            refused += storage.setValue("deviceName", "Attic") ? 0 : 1;
            on.disk->work();
            stored = nameIn(storage);
        }
        on.disk->cutPowerAt(1);
        on.disk->restorePower(on.random);
        on.disk->work();
        Storage storage(on.file, on.disk);
        EXPECT_EQ(nameIn(storage), stored) << "seed " << seed;
    }
    EXPECT_GT(refused, 0U);
}

TEST(PowerCutTest, ABackupIsCompleteOrTheFormerOneIsThere) {
    long calls = 1;
    for (long call = 1; call <= calls + 1; ++call) {
        SCOPED_TRACE("call " + std::to_string(call) + " of " + std::to_string(calls));
        const SettingsHostTests::LogRecording log;
        const TestSupport::TemporaryDirectory folder(TestSupport::memoryFolder());
        const std::string file = folder / "settings.db";
        const auto disk = std::make_shared<SettingsHostTests::FaultyDisk>();
        disk->watch(folder.path());
        bool returned = false;
        {
            Storage storage(file, disk);
            EXPECT_TRUE(storage.setValue("deviceName", "first"));
            storage.backupNow();
            EXPECT_TRUE(storage.setValue("deviceName", "second"));
            if (call == 1) {
                disk->work();
                storage.backupNow();
                calls = disk->calls();
                continue;
            }
            disk->cutPowerAt(call - 1);
            try {
                storage.backupNow();
                returned = true;
                disk->cutPowerAt(1);
            } catch (const DatabaseError&) {
                // Power cut during the backup.
            }
        }
        std::mt19937 random(static_cast<unsigned>(call));
        disk->restorePower(random);
        const std::string newest = file + ".backup.1";
        const std::string found = valueIn(std::filesystem::exists(newest) ? newest : file + ".backup.2");
        EXPECT_TRUE(found == "second" || (found == "first" && !returned)) << found;
        EXPECT_TRUE(!returned || std::filesystem::exists(newest));
        ASSERT_FALSE(::testing::Test::HasFailure());
    }
    EXPECT_GT(calls, 20);
}

}  // namespace SettingsHandlerKit
