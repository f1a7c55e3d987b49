#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/resource.h>
#include <sys/stat.h>

#include "HostFixture.h"
#include "support/WebClient.h"

namespace SystemTests {

/// The log of a running host.
class HostLog : public HostTest {
protected:
    static Lines linesOf(const std::string& text) {
        Lines lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    /// Reads the log until a line holds `text`.
    void awaitLine(const std::string& text) {
        for (;;) {
            const auto line = host->errors().readLine();
            ASSERT_TRUE(line) << "no line holds " << text;
            if (contains(*line, text)) {
                return;
            }
        }
    }

    /// Sends values with `marker` for the setting `key` wherever a frame can hold one: valid, refused and rejected
    /// ones.
    void sendEverywhere(const std::string& key, const std::string& marker, long& timestamp) {
        const auto value = [&](int number) { return "\"" + marker + std::to_string(number) + "\""; };
        set(key, value(1), ++timestamp);
        set(key, value(1), ++timestamp);
        set(key, value(2), 1);
        set(key, R"({"name":)" + value(1) + "}", ++timestamp);
        send(R"({"type":24,"payload":{"settingDBId":")" + key + R"(","to":)" + value(3) + "}}");
        set(key, "\"" + std::string(70000, 'x') + marker + "\"", ++timestamp);
        send(R"({"type":99,"payload":{"settingDBId":")" + key + R"(","to":)" + value(4) + "}}");
        send(R"({"type":24,"payload":)" + value(5));
        send(getRequest("[\"" + key + "\"]", marker));
        device(R"({"command":"setting","key":")" + key + R"(","value":)" + value(6) + "}");
        device(R"({"command":)" + value(7) + "}");
        // As on a full disk.
        rlimit unlimited{};
        ASSERT_EQ(::prlimit(host->pid(), RLIMIT_FSIZE, nullptr, &unlimited), 0);
        const rlimit full{1, unlimited.rlim_max};
        ASSERT_EQ(::prlimit(host->pid(), RLIMIT_FSIZE, &full, nullptr), 0);
        set(key, value(8), ++timestamp);
        device(R"({"command":"setting","key":")" + key + R"(","value":)" + value(9) + "}");
        ASSERT_EQ(::prlimit(host->pid(), RLIMIT_FSIZE, &unlimited, nullptr), 0);
    }
};

TEST_F(HostLog, IsAlsoWrittenToAPrivateFile) {
    start({"--log-level", "0", "--log-file", folder / "host.log"});
    set("deviceName", "\"Den\"");
    const Lines standardError = linesOf(stop());
    EXPECT_GT(standardError.size(), 10U);
    EXPECT_EQ(linesOf(TestSupport::contentOf(folder / "host.log")), standardError);
    EXPECT_EQ(std::filesystem::status(folder / "host.log").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(HostLog, RotatesItsFileWhileTheHostServes) {
    start({"--log-level", "0", "--log-file", folder / "host.log"});
    const std::string large = "\"" + std::string(60000, 'x');
    for (int number = 0; number < 40; ++number) {
        set("deviceName", large + std::to_string(number) + "\"", number);
    }
    stop();
    EXPECT_TRUE(std::filesystem::exists(folder / "host.log.2"));
    EXPECT_FALSE(std::filesystem::exists(folder / "host.log.3"));
    for (const auto* name : {"host.log", "host.log.1", "host.log.2"}) {
        EXPECT_LE(std::filesystem::file_size(folder / name), 1048576U) << name;
    }
}

TEST_F(HostLog, HoldsTheReasonOfAFailedStart) {
    std::ofstream(folder / "run") << "no folder";
    const auto failed = runToEnd({"--log-file", folder / "host.log"});
    EXPECT_EQ(failed.status, 1);
    const Lines shown = linesOf(failed.errors);
    const Lines kept = linesOf(TestSupport::contentOf(folder / "host.log"));
    ASSERT_EQ(shown.size(), 1U);
    ASSERT_EQ(kept.size(), 1U);
    const std::string reason = shown[0].substr(std::string("settings-host: ").size());
    EXPECT_TRUE(contains(kept[0], " error [")) << kept[0];
    EXPECT_EQ(kept[0].substr(kept[0].find("] ") + 2), "settings-host:" + reason);
}

TEST_F(HostLog, ReopensItsFileOnSighup) {
    const std::string file = folder / "host.log";
    start({"--log-level", "0", "--log-file", file});
    set("deviceName", "\"Den\"");
    std::filesystem::rename(file, folder / "moved.log");
    const std::string before = TestSupport::contentOf(folder / "moved.log");
    host->sendSignal(SIGHUP);
    ASSERT_NO_FATAL_FAILURE(awaitLine("settings-host:reopened the log file"));
    set("deviceName", "\"Attic\"", 2);
    EXPECT_EQ(get("deviceName"), "Attic") << "the host stopped";
    const Lines shown = linesOf(stop());
    Lines kept = linesOf(TestSupport::contentOf(file));
    ASSERT_FALSE(kept.empty());
    EXPECT_TRUE(contains(kept[0], "settings-host:reopened the log file")) << kept[0];
    kept.erase(kept.begin());
    EXPECT_EQ(kept, shown);
    EXPECT_EQ(TestSupport::contentOf(folder / "moved.log"), before) << "the host still wrote to the old file";
}

TEST_F(HostLog, ContinuesWithoutAFileThatCannotBeReopened) {
    const std::string file = folder / "host.log";
    start({"--log-file", file});
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    host->sendSignal(SIGHUP);
    ASSERT_NO_FATAL_FAILURE(awaitLine("settings-host:cannot reopen the log file " + file + ", its lines are lost: "));
    EXPECT_EQ(get("deviceName"), "TV");
}

TEST_F(HostLog, NamesTheRequestOfALine) {
    start({"--log-level", "0", "--log-format", "json"});
    set("orliaLocale", R"("{}")");
    set("deviceName", "\"Den\"");
    Lines about;
    for (const auto& line : linesOf(stop())) {
        const auto members = parsed(line);
        if (!members.HasMember("requestType")) {
            continue;
        }
        const std::string setting = members.HasMember("setting") ? members["setting"].GetString() : "";
        const std::string description = std::to_string(members["requestType"].GetInt()) + " " + setting;
        if (about.empty() || about.back() != description) {
            about.push_back(description);
        }
    }
    EXPECT_EQ(about, (Lines{"24 orliaLocale", "7 ", "24 deviceName", "7 "}));
}

TEST_F(HostLog, AReaderThatStopsDoesNotBlockTheHost) {
    start({"--log-level", "0"});
    const std::string large = "\"" + std::string(60000, 'x');
    for (int number = 0; number < 40; ++number) {
        set("deviceName", large + std::to_string(number) + "\"", number);
    }
    EXPECT_EQ(get("deviceName").size(), 60002U);
    EXPECT_TRUE(host->errors().readLine()) << "the first lines fit into the pipe";
    // Empties the pipe, which then has room for new lines. Lines without a request, such as that of a backup, may be
    // written meanwhile.
    const std::string waiting = host->errors().readAll(std::chrono::milliseconds(200));
    set("deviceName", "\"Den\"", 100);
    const std::string rest = stop();
    EXPECT_TRUE(contains(waiting + rest, " log lines were lost"));
    const std::string last = linesOf(rest).back();
    EXPECT_TRUE(contains(last, "settings-host:stopping")) << last;
}

TEST_F(HostLog, AtLevelTwoAcceptedChangesAreNotLogged) {
    start({"--log-level", "2"});
    for (const auto* key : {"deviceName", "friendlyName", "companionDevice", "captionsFontSize"}) {
        set(key, R"("[\"x\"]")");
    }
    EXPECT_EQ(get("deviceName"), "[\"x\"]");
    const std::string log = stop();
    EXPECT_FALSE(contains(log, "[\"x\"]")) << log;
}

TEST_F(HostLog, LinesOfTheHostHoldNoUserValues) {
    const std::string marker = "Zanzibar";
    webArguments = {"--listen", "127.0.0.1:0"};
    host = launch({"--log-level", "0"});
    const std::string ready = host->output().readLine().value();
    const auto port = static_cast<std::uint16_t>(std::stoi(ready.substr(ready.find(":", 14) + 1)));
    device(R"({"command":"trace","enabled":true})");
    long timestamp = 1000;
    for (const std::string key : {"deviceName", "friendlyName", "companionDevice"}) {
        sendEverywhere(key, marker, timestamp);
    }
    set("orliaLocale", R"("{\"name\":\")" + marker + R"(\"}")", ++timestamp);
    device(R"({"command":"setting","key":"orliaLocale","value":"{\"name\":\")" + marker + R"(\"}"})");
    TestSupport::httpGet(port, "/" + marker);
    TestSupport::httpGet(port, "/?key=" + marker);
    WireTests::HostWebSocket(port, "/settings?key=" + marker, marker);
    send(R"({"type":19})");
    send(R"({"type":22})");
    disconnect();
    int own = 0;
    bool markerFound = false;
    for (const auto& line : linesOf(stop())) {
        markerFound = markerFound || contains(line, marker);
        if (contains(line, "] settings-host:")) {
            ++own;
            EXPECT_FALSE(contains(line, marker)) << line.substr(0, 300);
        }
    }
    EXPECT_GT(own, 5);
    EXPECT_TRUE(markerFound) << "lines of the handler hold values";
}

}  // namespace SystemTests
