#include <filesystem>

#include "kit/support/BackupFixture.h"
#include "server/BackupSchedule.h"
#include "server/protocol/MessageHub.h"
#include "server/protocol/TrafficObservers.h"
#include "server/sockets/UnixSocketListener.h"
#include "storage/LogOut.h"

namespace SettingsHandlerKit {

using namespace std::chrono_literals;

class BackupScheduleTest : public BackupFixture {
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
    MessageHub clients{std::make_shared<TrafficObservers>()};
    /// Without something to serve the loop would end.
    UnixSocketListener listener{loop, folder / "listener.sock", Origin::SOCKET, clients};
};

TEST_F(BackupScheduleTest, MakesABackupOnceItIsDueAndNotBefore) {
    fill();
    const BackupSchedule schedule(loop, storage, {1ms, 5ms, 24h, 8});
    int turns = 0;
    serveUntil([&] { return exists(1) && ++turns == 30; });
    EXPECT_EQ(valueIn(1, "key20"), std::string(5000, 'v'));
    EXPECT_FALSE(exists(2)) << "the first is still fresh";
    makeOlder(1, 25h);
    serveUntil([&] { return exists(2); });
    EXPECT_EQ(log.take(),
              (std::vector<std::string>{"1 settings-host:database backed up", "1 settings-host:database backed up"}));
}

TEST_F(BackupScheduleTest, ReportsFailuresAndRetries) {
    fill();
    disk->fillUpFrom(1);
    const BackupSchedule schedule(loop, storage, {1ms, 2ms, 24h, 8});
    std::vector<std::string> lines;
    serveUntil([&] {
        for (const auto& line : log.take()) {
            lines.push_back(line);
            // From the second time on there is room.
            disk->work();
        }
        return exists(1) && lines.size() == 2;
    });
    EXPECT_EQ(lines, (std::vector<std::string>{"3 settings-host:database backup failed: database or disk is full",
                                               "1 settings-host:database backed up"}));
}

TEST_F(BackupScheduleTest, StopsOnRequestAndRestartsAtTheNextCheck) {
    fill();
    const BackupSchedule schedule(loop, storage, {1ms, 5ms, 24h, 1});
    serveUntil([&] { return std::filesystem::exists(file + ".backup.new"); });
    storage.cancelBackup();
    EXPECT_EQ(files(), (std::vector<std::string>{"settings.db", "settings.db-wal"}));
    serveUntil([&] { return exists(1); });
    EXPECT_EQ(valueIn(1, "key20"), std::string(5000, 'v'));
    EXPECT_EQ(log.take(), std::vector<std::string>{"1 settings-host:database backed up"});
}

TEST_F(BackupScheduleTest, ErasesAtItsNextCheckWhatALogOutCouldNot) {
    put("deviceName", "Den");
    beginLogOut(database, [this] { table.clear(); });
    disk->fillUpFrom(1);
    finishLogOut(database);
    disk->work();
    EXPECT_EQ(log.take().size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(logOutMarkerName(file)));
    const BackupSchedule schedule(loop, storage, {1ms, 5ms, 24h, 1});
    serveUntil([&] { return exists(1); });
    EXPECT_FALSE(std::filesystem::exists(logOutMarkerName(file)));
    EXPECT_EQ(log.take(), std::vector<std::string>{});
}

TEST_F(BackupScheduleTest, MayOutliveItsStorageDuringABackup) {
    auto other = std::make_unique<SettingsHostTests::OpenStorage>(folder / "other/settings.db", disk);
    other->setValue("key", std::string(60000, 'v'));
    const BackupSchedule schedule(loop, *other, {1ms, 1h, 24h, 1});
    const std::string unfinished = folder / "other/settings.db.backup.new";
    serveUntil([&] { return std::filesystem::exists(unfinished); });
    other.reset();
    EXPECT_FALSE(std::filesystem::exists(unfinished));
}

}  // namespace SettingsHandlerKit
