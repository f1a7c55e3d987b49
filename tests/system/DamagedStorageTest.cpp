#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "WebHostFixture.h"
#include "support/NotificationSocket.h"
#include "support/Sanitizers.h"

namespace SystemTests {

/// Hosts that start with a damaged, foreign or locked database.
class HostDamagedStorage : public HostWeb {
protected:
    /// Leaves a database with the device name `name`.
    void storeName(const std::string& name) {
        startWeb();
        set("deviceName", "\"" + name + "\"");
        disconnect();
        stop();
    }

    void damage(const std::string& path) { std::ofstream(path) << std::string(10000, 'x'); }

    std::string backup() { return database() + ".backup.1"; }

    std::string health() {
        const std::string body = WireTests::healthOf(port).body;
        // The time since the start differs.
        const auto uptime = body.find("\"uptimeSeconds\"");
        return body.substr(0, body.find(',') + 1) + body.substr(body.find(',', uptime) + 1);
    }
};

TEST_F(HostDamagedStorage, StartsWithDefaultsAndReportsIt) {
    storeName("Den");
    damage(database());
    startWeb();
    EXPECT_EQ(get("deviceName"), "TV");
    EXPECT_EQ(health(),
              R"({"status":"recovered","storage":{"writable":true,"keys":0,"failures":0,"recoveredFrom":"defaults",)"
              R"("setAside":"settings.db.damaged"}})");
    set("deviceName", "\"Kitchen\"");
    disconnect();
    const std::string log = stop();
    EXPECT_TRUE(contains(log, "is damaged or not a database")) << log;
    EXPECT_TRUE(contains(log, "the old files were kept as settings.db.damaged")) << log;
    EXPECT_TRUE(contains(log, "all settings have their defaults")) << log;
    EXPECT_EQ(std::filesystem::file_size(database() + ".damaged"), 10000U);
    startWeb();
    EXPECT_EQ(get("deviceName"), "Kitchen");
    EXPECT_EQ(health(), R"({"status":"ok","storage":{"writable":true,"keys":1,"failures":0}})");
}

TEST_F(HostDamagedStorage, IsRestoredFromTheBackupThatTheHostMade) {
    if (TestSupport::sanitized) {
        GTEST_SKIP() << "waits for seconds; other builds do";
    }
    startWeb();
    set("deviceName", "\"Den\"");
    waitFor([&] { return std::filesystem::exists(backup()); });
    kill();
    disconnect();
    damage(database());
    // Otherwise the log would repair the file.
    std::filesystem::remove(database() + "-wal");
    startWeb();
    EXPECT_EQ(get("deviceName"), "Den");
    EXPECT_EQ(health(),
              R"({"status":"recovered","storage":{"writable":true,"keys":1,"failures":0,"recoveredFrom":"backup",)"
              R"("setAside":"settings.db.damaged"}})");
}

TEST_F(HostDamagedStorage, DoesNotTouchTheDatabaseOfAnotherProgram) {
    std::filesystem::create_directory(folder / "state");
    sql("CREATE TABLE theirs (x); INSERT INTO theirs VALUES (1)");
    expectCannotStart("belongs to another program; left unchanged");
    EXPECT_EQ(sql("SELECT x FROM theirs"), "1");
    EXPECT_FALSE(std::filesystem::exists(database() + ".damaged"));
}

TEST_F(HostDamagedStorage, DoesNotTouchTheDatabaseOfANewerVersion) {
    storeName("Den");
    sql("PRAGMA user_version=99");
    expectCannotStart("was written by a newer version; left unchanged");
    EXPECT_EQ(sql("SELECT value FROM settings WHERE key='deviceName'"), "Den");
    sql("PRAGMA user_version=1");
    startWeb();
    EXPECT_EQ(get("deviceName"), "Den");
}

TEST_F(HostDamagedStorage, WaitsAtMostASecondForAnotherProcess) {
    storeName("Den");
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(database().c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE", nullptr, nullptr, nullptr),
              SQLITE_OK);
    expectCannotStart("is in use by another process");
    // The lock stays until the other process closes the database.
    sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
    TestSupport::NotificationSocket notifications(folder / "notify");
    environment["NOTIFY_SOCKET"] = folder / "notify";
    std::thread release([other, &notifications] {
        EXPECT_EQ(notifications.receive(), "STATUS=Opening the database");
        // Less than the second that the host waits, so that it finds the database in use first.
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        sqlite3_close(other);
    });
    startWeb();
    release.join();
    EXPECT_EQ(get("deviceName"), "Den");
}

}  // namespace SystemTests
