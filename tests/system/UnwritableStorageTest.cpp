#include <filesystem>
#include <fstream>
#include <sstream>

#include "WebHostFixture.h"

namespace SystemTests {

/// Hosts on a small file system of their own, which can be filled and made read-only.
class HostUnwritableStorage : public HostWeb {
protected:
    void SetUp() override {
        std::filesystem::create_directory(folder / "state");
        // The mount namespace of this process, which ends with it.
        keeper = std::make_unique<TestSupport::ChildProcess>(
            Lines{"unshare", "--user", "--map-root-user", "--mount", "sh", "-c",
                  "mount -t tmpfs -o size=400k,mode=700 none '" + (folder / "state") +
                      "' && echo mounted && exec sleep 1000"});
        if (keeper->output().readLine() != "mounted") {
            GTEST_SKIP() << "this machine does not allow mounts: " << keeper->errors().readAll();
        }
    }

    Lines inside(const Lines& command) {
        Lines whole{"nsenter", "--target", std::to_string(keeper->pid()), "--user", "--mount", "--"};
        whole.insert(whole.end(), command.begin(), command.end());
        return whole;
    }

    void startInside() {
        programPrefix = inside({});
        // Lines of level 1 hold the large values.
        startWeb({"--log-level", "3"});
    }

    std::string insidePath(const std::string& path) {
        return "/proc/" + std::to_string(keeper->pid()) + "/root" + path;
    }

    void fillDisk() {
        std::ofstream filler(insidePath(folder / "state/filler"), std::ios::binary);
        while (filler << std::string(1024, 'x') && filler.flush()) {
        }
    }

    void makeRoom() { std::filesystem::remove(insidePath(folder / "state/filler")); }

    void remount(const std::string& option) {
        const auto mounted = TestSupport::run(inside({"mount", "-o", "remount," + option, folder / "state"}));
        ASSERT_EQ(mounted.status, 0) << mounted.errors;
    }

    std::string health() { return WireTests::healthOf(port).body; }

    std::unique_ptr<TestSupport::ChildProcess> keeper;
};

TEST_F(HostUnwritableStorage, AFullDiskRefusesWhatDoesNotFitAndKeepsTheRest) {
    startInside();
    EXPECT_EQ(set("deviceName", "\"Den\"").size(), 1U);
    fillDisk();
    const std::string large(50000, 'v');
    EXPECT_EQ(set("companionDevice", "\"" + large + "\"").size(), 0U) << "no event";
    EXPECT_EQ(get("deviceName"), "Den");
    EXPECT_TRUE(contains(health(), R"("status":"degraded")")) << health();
    EXPECT_TRUE(contains(health(), R"("lastFailure":"database: database or disk is full")")) << health();
    kill();
    disconnect();
    startInside();
    EXPECT_EQ(get("deviceName"), "Den") << "the host starts on a full disk, too";
    EXPECT_EQ(get("companionDevice"), R"(["",""])") << "nothing of the refused value is stored";
    EXPECT_EQ(set("companionDevice", "\"" + large + "\"").size(), 0U);
    makeRoom();
    EXPECT_EQ(set("companionDevice", "\"" + large + "\"").size(), 1U);
    EXPECT_TRUE(contains(health(), R"("status":"ok")")) << health();
    disconnect();
    const std::string log = stop();
    EXPECT_TRUE(contains(log, "settings-host:cannot store 'companionDevice': database: database or disk is full"))
        << log;
}

TEST_F(HostUnwritableStorage, AFullDiskUndoesABatchThatDoesNotFit) {
    startInside();
    set("timezone", R"("Europe/Paris")");
    fillDisk();
    const std::string large(50000, 'v');
    const std::string batch = R"({"batch":[)" + setRequest("timezone", R"("Europe/Rome")") + "," +
                              setRequest("handsFreeEnabled", R"("true")") + "," +
                              setRequest("companionDevice", "\"" + large + "\"") + "]}";
    EXPECT_EQ(send(batch), Lines{R"({"notice":{"reread":["companionDevice","handsFreeEnabled","timezone"]}})"});
    EXPECT_EQ(get("timezone"), "Europe/Paris");
    EXPECT_EQ(get("handsFreeEnabled"), "false");
    EXPECT_TRUE(contains(health(), R"("status":"degraded")")) << health();
    makeRoom();
    EXPECT_EQ(send(batch).size(), 3U) << "the events";
    EXPECT_EQ(get("timezone"), "Europe/Rome");
    EXPECT_TRUE(contains(health(), R"("status":"ok")")) << health();
    disconnect();
    stop();
}

TEST_F(HostUnwritableStorage, AReadOnlyDiskServesWhatIsStored) {
    startInside();
    set("deviceName", "\"Den\"");
    device(R"({"command":"locale","value":"fr-FR"})");
    // After a kill the last changes are only in the log; after a stop there is no log.
    kill();
    disconnect();
    for (const bool hasLog : {true, false}) {
        SCOPED_TRACE(hasLog ? "with a log" : "without a log");
        EXPECT_EQ(std::filesystem::exists(insidePath(database() + "-wal")), hasLog);
        remount("ro");
        startInside();
        EXPECT_EQ(get("deviceName"), "Den");
        EXPECT_EQ(get("orliaLocale"), R"(["fr-FR"])");
        EXPECT_EQ(set("deviceName", "\"Kitchen\"").size(), 0U);
        EXPECT_EQ(get("deviceName"), "Den");
        EXPECT_TRUE(contains(device(R"({"command":"locale","value":"de-DE"})"), "not-written"));
        EXPECT_TRUE(contains(health(), R"("status":"degraded")")) << health();
        disconnect();
        const std::string log = stop();
        EXPECT_TRUE(contains(log, "changes cannot be stored: the file system is read-only")) << log;
        EXPECT_TRUE(contains(log, "cannot store 'deviceName': database: attempt to write a readonly database")) << log;
        remount("rw");
        startInside();
        EXPECT_EQ(get("deviceName"), "Den");
        EXPECT_TRUE(contains(health(), R"("status":"ok")")) << health();
        disconnect();
        stop();
    }
}

TEST_F(HostUnwritableStorage, AStoredLocaleThatCannotBeSetAsideStopsTheHostWithItsReasonLast) {
    startInside();
    stop();
    const auto stored = TestSupport::run(
        inside({"sqlite3", database(), R"(INSERT INTO settings VALUES ('orliaLocale', '{"no":"array"}'))"}));
    ASSERT_EQ(stored.status, 0) << stored.errors;
    remount("ro");
    programPrefix = inside({});
    const auto failed = runToEnd();
    EXPECT_EQ(failed.output, "");
    EXPECT_EQ(failed.status, 1);
    Lines lines;
    std::istringstream errors(failed.errors);
    for (std::string line; std::getline(errors, line);) {
        // Without time, level and thread.
        lines.push_back(line.substr(contains(line, "] ") ? line.find("] ") + 2 : 0));
    }
    EXPECT_EQ(lines,
              (Lines{"settings-host:changes cannot be stored: the file system is read-only",
                     "settings-host:cannot set 'orliaLocale' aside: database: attempt to write a readonly database",
                     "settings-host: the stored value of 'orliaLocale' is unusable and could not be set aside"}));
}

TEST_F(HostUnwritableStorage, AResetRefusesBesideAHostOnAReadOnlyDisk) {
    startInside();
    set("deviceName", "\"Den\"");
    for (const bool isKilled : {true, false}) {
        SCOPED_TRACE(isKilled ? "with a log" : "without a log");
        isKilled ? kill() : static_cast<void>(stop());
        disconnect();
        remount("ro");
        startInside();
        // The files could be removed now, but the host still reads them.
        remount("rw");
        const auto refused = TestSupport::run(inside({SETTINGS_HOST, "--storage", database(), "--reset", "--yes"}));
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.errors, "settings-host: " + database() + " is in use by another process\n");
        EXPECT_EQ(get("deviceName"), "Den");
        stop();
        disconnect();
        startInside();
        EXPECT_EQ(get("deviceName"), "Den");
    }
}

TEST_F(HostUnwritableStorage, AResetOnAReadOnlyDiskFailsWithTheReason) {
    startInside();
    set("deviceName", "\"Den\"");
    stop();
    disconnect();
    remount("ro");
    const auto failing = TestSupport::run(inside({SETTINGS_HOST, "--storage", database(), "--reset", "--yes"}));
    EXPECT_EQ(failing.status, 1);
    EXPECT_EQ(failing.errors, "settings-host: cannot open " + database() + ": Read-only file system\n");
    startInside();
    EXPECT_EQ(get("deviceName"), "Den");
}

TEST_F(HostUnwritableStorage, AReadOnlyDiskWithoutADatabaseStopsTheHost) {
    remount("ro");
    programPrefix = inside({});
    expectCannotStart("Read-only file system");
}

}  // namespace SystemTests
