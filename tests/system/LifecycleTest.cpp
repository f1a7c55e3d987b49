#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "HostFixture.h"
#include "support/RegularExpression.h"

namespace SystemTests {

class HostLifecycle : public HostTest {
protected:
    /// All lines on standard error of a host that cannot start.
    Lines linesOfFailedStart(int status, const Lines& moreArguments) {
        const auto failed = runToEnd(moreArguments);
        EXPECT_EQ(failed.status, status);
        EXPECT_EQ(failed.output, "");
        Lines lines;
        std::istringstream errors(failed.errors);
        for (std::string line; std::getline(errors, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    /// The same with --log-format json: level and text of each line.
    Lines jsonLinesOfFailedStart(int status, Lines moreArguments) {
        moreArguments.insert(moreArguments.end(), {"--log-format", "json"});
        Lines texts;
        for (const auto& line : linesOfFailedStart(status, moreArguments)) {
            const auto members = parsed(line);
            if (!members.IsObject() || !members.HasMember("level") || !members.HasMember("text")) {
                ADD_FAILURE() << "not a log line: " << line;
                continue;
            }
            texts.push_back(std::to_string(members["level"].GetInt()) + " " + members["text"].GetString());
        }
        return texts;
    }
};

TEST_F(HostLifecycle, StopsCleanlyOnSignals) {
    // As under nohup. Programs that the test starts have the default action again.
    const auto before = std::signal(SIGHUP, SIG_IGN);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        start();
        host->sendSignal(signal);
        EXPECT_EQ(host->wait(), 0) << signal;
        EXPECT_FALSE(std::filesystem::exists(socket()));
        EXPECT_FALSE(std::filesystem::exists(deviceSocket()));
        EXPECT_FALSE(std::filesystem::exists(database() + "-wal")) << "the database was not closed";
    }
    std::signal(SIGHUP, before);
}

TEST_F(HostLifecycle, RemovesItsSocketsFromTwoFolders) {
    start({"--device-socket", folder / "other/device.sock"});
    EXPECT_TRUE(std::filesystem::exists(folder / "other/device.sock"));
    stop();
    EXPECT_FALSE(std::filesystem::exists(socket()));
    EXPECT_FALSE(std::filesystem::exists(folder / "other/device.sock"));
}

TEST_F(HostLifecycle, KeepsAWriteThatWasAnsweredBeforeTheStop) {
    start();
    client().sendLine(setRequest("deviceName", "\"Den\""));
    ASSERT_TRUE(client().receiveLine());
    stop();
    disconnect();
    start();
    EXPECT_EQ(get("deviceName"), "Den");
}

TEST_F(HostLifecycle, ReplacesTheSocketsOfAHostThatWasKilled) {
    start();
    kill();
    EXPECT_TRUE(std::filesystem::exists(socket()));
    start();
    EXPECT_EQ(get("deviceName"), "TV");
}

TEST_F(HostLifecycle, RefusesToStartBesideARunningHost) {
    start();
    expectCannotStart("another host listens at");
    expectCannotStart("another host listens at", 1, {"--storage", folder / "other.db"});
    expectCannotStart("in use by another process", 1,
                      {"--socket", folder / "run/b.sock", "--device-socket", folder / "run/c.sock"});
    expectCannotStart("another host listens at", 1,
                      {"--storage", folder / "other.db", "--socket", folder / "run/b.sock"});
    EXPECT_EQ(get("deviceName"), "TV");
}

TEST_F(HostLifecycle, ReportsWrongArguments) {
    expectCannotStart("--bogus", 2, {"--bogus"});
    expectCannotStart("9", 2, {"--log-level", "9"});
    std::ofstream(folder / "file") << "x";
    expectCannotStart("cannot", 1, {"--storage", folder / "file/settings.db"});
    expectCannotStart("is a link or not a folder", 1, {"--socket", folder / "file/s.sock"});
    expectCannotStart("longer than 107 bytes", 1, {"--socket", folder / (std::string(120, 'x') + "/s.sock")});
}

TEST_F(HostLifecycle, AFailedStartReportsItsReasonAndNothingElse) {
    start();
    stop();
    const std::string file = folder / "file";
    std::ofstream(file) << "x";
    const std::string inFile = folder / "file/s.sock";
    const std::string noFolder = file + " is a link or not a folder; the host's sockets need their own folder";
    const Lines otherPlaces{"--socket", folder / "b/s", "--device-socket", folder / "b/d"};
    webArguments = {"--listen", "127.0.0.1:0", "--pages", folder / "none"};
    const std::string noPages = "cannot read the pages' folder " + (folder / "none") + ": No such file or directory";
    EXPECT_EQ(linesOfFailedStart(1, {}), Lines{"settings-host: " + noPages});
    EXPECT_EQ(jsonLinesOfFailedStart(1, {}), Lines{"3 settings-host:" + noPages});
    webArguments = {"--no-web"};
    EXPECT_EQ(linesOfFailedStart(1, {"--device-socket", inFile}), Lines{"settings-host: " + noFolder});
    EXPECT_EQ(jsonLinesOfFailedStart(1, {"--device-socket", inFile}), Lines{"3 settings-host:" + noFolder});
    environment = {{"LISTEN_FDNAMES", "settings"}};
    sockets = {-1};
    const std::string notPassed = "cannot take the passed sockets over: Bad file descriptor";
    EXPECT_EQ(jsonLinesOfFailedStart(1, {}), Lines{"3 settings-host:" + notPassed});
    environment.clear();
    sockets.clear();
    start();
    const std::string inUse = database() + " is in use by another process";
    EXPECT_EQ(linesOfFailedStart(1, otherPlaces), Lines{"settings-host: " + inUse});
    EXPECT_EQ(jsonLinesOfFailedStart(1, otherPlaces), Lines{"3 settings-host:" + inUse});
    EXPECT_EQ(get("deviceName"), "TV");
    EXPECT_FALSE(std::filesystem::exists(folder / "b/s")) << "it left a socket behind";
    EXPECT_FALSE(std::filesystem::exists(folder / "b/d"));
}

TEST_F(HostLifecycle, ReportsWrongArgumentsInTheFormatOfTheLog) {
    const std::string unknown = "The following argument was not expected: --bogus";
    EXPECT_EQ(linesOfFailedStart(2, {"--bogus"}), Lines{"settings-host: " + unknown});
    EXPECT_EQ(jsonLinesOfFailedStart(2, {"--bogus"}), Lines{"3 settings-host:" + unknown});
    const std::string tooHigh = "--log-level: Value 9 not in range 0 to 3";
    EXPECT_EQ(jsonLinesOfFailedStart(2, {"--log-level", "9"}), Lines{"3 settings-host:" + tooHigh});
    const std::string same = "--socket and --device-socket are the same: " + socket();
    EXPECT_EQ(linesOfFailedStart(2, {"--device-socket", socket()}), Lines{"settings-host: " + same});
    EXPECT_EQ(jsonLinesOfFailedStart(2, {"--device-socket", folder / "state/../run/settings.sock"}),
              Lines{"3 settings-host:" + same});
    const std::string noValue =
        "--storage: '--storage-x' looks like an option; for a path of that name use ./--storage-x";
    EXPECT_EQ(linesOfFailedStart(2, {"--storage", "--storage-x"}), Lines{"settings-host: " + noValue});
    EXPECT_FALSE(std::filesystem::exists("--storage-x"));
}

TEST_F(HostLifecycle, FilesArePrivate) {
    start();
    for (const auto& path : {socket(), deviceSocket(), database(), database() + "-wal"}) {
        EXPECT_EQ(TestSupport::modeOf(path), 0600U) << path;
    }
    EXPECT_EQ(TestSupport::modeOf(folder / "run"), 0700U);
    EXPECT_EQ(TestSupport::modeOf(folder / "state"), 0700U);
}

TEST_F(HostLifecycle, KeepsRunningWhenNobodyReadsItsOutput) {
    start({"--log-level", "0"});
    host->closeOutput();
    host->closeErrors();
    set("deviceName", "\"Den\"");
    EXPECT_EQ(get("deviceName"), "Den");
    host->sendSignal(SIGTERM);
    EXPECT_EQ(host->wait(), 0);
}

TEST_F(HostLifecycle, KeepsRunningOnSighupWhenItIsIgnored) {
    const std::string command = "trap '' HUP; exec " + std::string(SETTINGS_HOST) + " --storage " + database() +
                                " --socket " + socket() + " --device-socket " + deviceSocket() + " --no-web " +
                                sandboxSwitch;
    host = std::make_unique<TestSupport::ChildProcess>(Lines{"sh", "-c", command});
    ASSERT_TRUE(host->output().readLine());
    host->sendSignal(SIGHUP);
    EXPECT_EQ(get("deviceName"), "TV");
    disconnect();
    stop();
}

TEST_F(HostLifecycle, PrintsNothingIntoItsDatabaseWhenTheStandardStreamsAreClosed) {
    const std::string command = "exec " + std::string(SETTINGS_HOST) + " --log-level 0 --storage " + database() +
                                " --socket " + socket() + " --device-socket " + deviceSocket() + " --no-web " +
                                sandboxSwitch + " <&- >&- 2>&-";
    host = std::make_unique<TestSupport::ChildProcess>(Lines{"sh", "-c", command});
    waitFor([&] { return std::filesystem::exists(deviceSocket()); });
    set("deviceName", "\"Den\"");
    disconnect();
    stop();
    EXPECT_EQ(sql("PRAGMA integrity_check"), "ok");
    start();
    EXPECT_EQ(get("deviceName"), "Den");
}

TEST_F(HostLifecycle, MigratesValuesOfOlderVersions) {
    start();
    stop();
    sql("INSERT INTO settings VALUES ('orliaLocale', '[\"de-DE\"]'), ('timezone', 'Europe/Berlin')");
    start();
    EXPECT_EQ(get("orliaLocale"), R"(["de-DE"])");
    EXPECT_EQ(get("timezone"), "Europe/Berlin");
    disconnect();
    stop();
    EXPECT_EQ(sql("SELECT count(*) FROM settings"), "0");
}

TEST_F(HostLifecycle, HelpAndVersionAreOnStandardOutput) {
    const auto help = TestSupport::run({SETTINGS_HOST, "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(contains(help.output, "--device-socket"));
    EXPECT_EQ(help.errors, "");
    const auto version = TestSupport::run({SETTINGS_HOST, "--version"});
    EXPECT_EQ(version.status, 0);
    const char* const form =
        "settings-host [0-9]+\\.[0-9]+\\.[0-9]+ \\((commit [0-9a-z.~+-]+(, with changes)?|unknown commit)\\)\n";
    EXPECT_FALSE(TestSupport::matchOf(version.output, form).empty()) << version.output;
}

TEST_F(HostLifecycle, LogsJsonLinesWhenAsked) {
    start({"--log-format", "json", "--log-level", "0"});
    set("deviceName", R"("a\nb\u0001")");
    std::istringstream log(stop());
    int lines = 0;
    for (std::string line; std::getline(log, line); ++lines) {
        EXPECT_TRUE(parsed(line).HasMember("text")) << line;
    }
    EXPECT_GT(lines, 10);
}

}  // namespace SystemTests
