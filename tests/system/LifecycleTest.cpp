#include <csignal>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

#include <sys/stat.h>

#include "HostFixture.h"

namespace SystemTests {

class HostLifecycle : public HostTest {
protected:
    /// The host must end by itself with a message and no ready line.
    void expectCannotStart(const std::string& message, int status = 1, const Lines& moreArguments = {}) {
        const auto failing = launch(moreArguments);
        const std::string output = failing->output().readAll();
        const std::string errors = failing->errors().readAll();
        EXPECT_EQ(failing->wait(), status) << errors;
        EXPECT_EQ(output, "");
        EXPECT_TRUE(contains(errors, message)) << errors;
    }

    /// What a host that cannot start says, from the first line to the last.
    Lines wordsOfFailedStart(int status, const Lines& moreArguments) {
        const auto failing = launch(moreArguments);
        EXPECT_EQ(failing->output().readAll(), "");
        Lines lines;
        while (const auto line = failing->errors().readLine()) {
            lines.push_back(*line);
        }
        EXPECT_EQ(failing->wait(), status);
        return lines;
    }

    /// The same of one that was asked for JSON: level and text of each line.
    Lines jsonWordsOfFailedStart(int status, Lines moreArguments) {
        moreArguments.insert(moreArguments.end(), {"--log-format", "json"});
        Lines words;
        for (const auto& line : wordsOfFailedStart(status, moreArguments)) {
            const auto members = parsed(line);
            if (!members.IsObject() || !members.HasMember("level") || !members.HasMember("text")) {
                ADD_FAILURE() << "no log line: " << line;
                continue;
            }
            words.push_back(std::to_string(members["level"].GetInt()) + " " + members["text"].GetString());
        }
        return words;
    }
};

TEST_F(HostLifecycle, StopsCleanlyOnSignals) {
    // As it is under nohup; the test's own matter, not the host's.
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

TEST_F(HostLifecycle, LosesNoValueWhoseEventWasSeenWhenItIsKilled) {
    for (int round = 0; round < 5; ++round) {
        start();
        WireTests::HostClient& connection = client();
        std::thread writer([&connection] {
            for (int number = 0; number < 2000; ++number) {
                if (!connection.sendLine(setRequest("deviceName", "\"" + std::to_string(number) + "\"", number))) {
                    break;
                }
            }
        });
        int seen = -1;
        for (int count = 0; count < 20 + 37 * round; ++count) {
            seen = std::stoi(parsed(connection.receiveLine().value())["payload"]["to"].GetString());
        }
        kill();
        writer.join();
        while (const auto line = connection.receiveLine()) {
            seen = std::stoi(parsed(*line)["payload"]["to"].GetString());
        }
        disconnect();
        start();
        const int kept = std::stoi(get("deviceName"));
        // Events that waited for the reader were never seen, but their values may be there too.
        EXPECT_GE(kept, seen);
        EXPECT_LT(kept, 2000);
        ask(setRequest("deviceName", "\"reset\"") + "\n" + getRequest("[]"));
        disconnect();
        stop();
    }
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
    expectCannotStart("is a link or no folder", 1, {"--socket", folder / "file/s.sock"});
    expectCannotStart("longer than 107 bytes", 1, {"--socket", folder / (std::string(120, 'x') + "/s.sock")});
}

TEST_F(HostLifecycle, AFailedStartReportsItsReasonAndNothingElse) {
    start();
    stop();
    const std::string file = folder / "file";
    std::ofstream(file) << "x";
    const std::string inFile = folder / "file/s.sock";
    const std::string noFolder = file + " is a link or no folder; the host's sockets need a folder of their own";
    const Lines otherPlaces{"--socket", folder / "b/s", "--device-socket", folder / "b/d"};
    webArguments = {"--listen", "127.0.0.1:0", "--pages", folder / "none"};
    const std::string noPages = "cannot read the pages' folder " + (folder / "none") + ": No such file or directory";
    EXPECT_EQ(wordsOfFailedStart(1, {}), Lines{"settings-host: " + noPages});
    EXPECT_EQ(jsonWordsOfFailedStart(1, {}), Lines{"3 settings-host:" + noPages});
    webArguments = {"--no-web"};
    EXPECT_EQ(wordsOfFailedStart(1, {"--device-socket", inFile}), Lines{"settings-host: " + noFolder});
    EXPECT_EQ(jsonWordsOfFailedStart(1, {"--device-socket", inFile}), Lines{"3 settings-host:" + noFolder});
    environment = {{"LISTEN_FDNAMES", "settings"}};
    sockets = {-1};
    const std::string notPassed = "cannot take the passed sockets over: Bad file descriptor";
    EXPECT_EQ(jsonWordsOfFailedStart(1, {}), Lines{"3 settings-host:" + notPassed});
    environment.clear();
    sockets.clear();
    start();
    const std::string inUse = database() + " is in use by another process";
    EXPECT_EQ(wordsOfFailedStart(1, otherPlaces), Lines{"settings-host: " + inUse});
    EXPECT_EQ(jsonWordsOfFailedStart(1, otherPlaces), Lines{"3 settings-host:" + inUse});
    EXPECT_EQ(get("deviceName"), "TV");
    EXPECT_FALSE(std::filesystem::exists(folder / "b/s")) << "it left a socket behind";
    EXPECT_FALSE(std::filesystem::exists(folder / "b/d"));
}

TEST_F(HostLifecycle, ReportsWrongArgumentsInTheFormatOfTheLog) {
    const std::string unknown = "The following argument was not expected: --bogus";
    EXPECT_EQ(wordsOfFailedStart(2, {"--bogus"}), Lines{"settings-host: " + unknown});
    EXPECT_EQ(jsonWordsOfFailedStart(2, {"--bogus"}), Lines{"3 settings-host:" + unknown});
    const std::string tooHigh = "--log-level: Value 9 not in range 0 to 3";
    EXPECT_EQ(jsonWordsOfFailedStart(2, {"--log-level", "9"}), Lines{"3 settings-host:" + tooHigh});
    const std::string same = "--socket and --device-socket are the same: " + socket();
    EXPECT_EQ(wordsOfFailedStart(2, {"--device-socket", socket()}), Lines{"settings-host: " + same});
    EXPECT_EQ(jsonWordsOfFailedStart(2, {"--device-socket", folder / "state/../run/settings.sock"}),
              Lines{"3 settings-host:" + same});
    const std::string noValue =
        "--storage: '--storage-x' looks like an option; for a path of that name use ./--storage-x";
    EXPECT_EQ(wordsOfFailedStart(2, {"--storage", "--storage-x"}), Lines{"settings-host: " + noValue});
    EXPECT_FALSE(std::filesystem::exists("--storage-x"));
}

TEST_F(HostLifecycle, FilesArePrivate) {
    start();
    const auto modeOf = [](const std::string& path) {
        struct stat status {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 0777U;
    };
    for (const auto& path : {socket(), deviceSocket(), database(), database() + "-wal"}) {
        EXPECT_EQ(modeOf(path), 0600U) << path;
    }
    EXPECT_EQ(modeOf(folder / "run"), 0700U);
    EXPECT_EQ(modeOf(folder / "state"), 0700U);
}

TEST_F(HostLifecycle, KeepsRunningWhenNobodyReadsItsOutput) {
    start({"--log-level", "0"});
    host->closeOutput();
    host->closeErrors();
    ask(setRequest("deviceName", "\"Den\"") + "\n" + getRequest("[]"));
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
    const auto until = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
    while (!std::filesystem::exists(deviceSocket()) && std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ask(setRequest("deviceName", "\"Den\"") + "\n" + getRequest("[]"));
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
    EXPECT_TRUE(std::regex_match(
        version.output,
        std::regex(R"(settings-host \d+\.\d+\.\d+ \((commit [0-9a-z.~+-]+(, with changes)?|unknown commit)\)\n)")))
        << version.output;
}

TEST_F(HostLifecycle, LogsJsonLinesWhenAsked) {
    start({"--log-format", "json", "--log-level", "0"});
    ask(setRequest("deviceName", R"("a\nb\u0001")") + "\n" + getRequest("[]"));
    std::istringstream log(stop());
    int lines = 0;
    for (std::string line; std::getline(log, line); ++lines) {
        EXPECT_TRUE(parsed(line).HasMember("text")) << line;
    }
    EXPECT_GT(lines, 10);
}

}  // namespace SystemTests
