#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Checks.h"
#include "support/TemporaryDirectory.h"

using SettingsCtl::checkPages;
using SettingsCtl::checkSocket;
using SettingsCtl::checkStatus;
using SettingsCtl::Findings;

namespace {

/// Each finding as a line.
std::vector<std::string> linesOf(const Findings& findings) {
    std::vector<std::string> lines;
    for (const auto& finding : findings) {
        lines.push_back((finding.ok ? "ok " : "wrong ") + finding.check + ": " + finding.text);
    }
    return lines;
}

std::vector<std::string> linesOf(const std::string& status) {
    return linesOf(checkStatus(status));
}

using Lines = std::vector<std::string>;

const std::string versions = R"("versions":{"host":")" SETTINGS_HANDLER_VERSION R"(","wire":"1.1.0"})";
const std::string ownVersions = "settingsctl " SETTINGS_HANDLER_VERSION ", wire 1.1.0";

/// A status with the right versions and `more`.
std::string status(const std::string& more) {
    return "{" + versions + "," + more + "}";
}

class SettingsCtlCheckOfTheSocket : public testing::Test {
protected:
    SettingsCtlCheckOfTheSocket() { ::setenv("TZ", "UTC", 1); }

    Lines linesFor(mode_t socketMode, mode_t folderMode) {
        std::filesystem::create_directory(host);
        std::ofstream(path).close();
        ::chmod(path.c_str(), socketMode);
        ::chmod(host.c_str(), folderMode);
        return linesOf(checkSocket("socket", path));
    }

    const TestSupport::TemporaryDirectory folder;
    const std::string host = folder / "host";
    const std::string path = host + "/settings.sock";
};

}  // namespace

TEST_F(SettingsCtlCheckOfTheSocket, FindsNothingWrongWithAUsersOrAGroupsSocket) {
    EXPECT_EQ(linesFor(0600, 0700),
              (Lines{"ok socket: " + path + " has mode 0600", "ok folder: " + host + " has mode 0700"}));
    EXPECT_EQ(linesFor(0660, 0750),
              (Lines{"ok socket: " + path + " has mode 0660", "ok folder: " + host + " has mode 0750"}));
}

TEST_F(SettingsCtlCheckOfTheSocket, ReportsASocketForEverybody) {
    EXPECT_EQ(linesFor(0666, 0700)[0],
              "wrong socket: " + path + " has mode 0666, so every user can connect: run 'chmod o= " + path + "'");
    EXPECT_EQ(linesFor(0602, 0700)[0],
              "wrong socket: " + path + " has mode 0602, so every user can connect: run 'chmod o= " + path + "'");
}

TEST_F(SettingsCtlCheckOfTheSocket, ReportsAFolderWhereOthersCanReplaceIt) {
    for (const auto& [mode, digits] : {std::pair<mode_t, std::string>{0770, "0770"}, {0707, "0707"}}) {
        EXPECT_EQ(linesFor(0600, mode)[1], "wrong folder: " + host + " has mode " + digits +
                                               ", so others can replace the socket: run 'chmod go-w " + host + "'");
    }
    EXPECT_EQ(linesFor(0600, 01777)[1], "ok folder: " + host + " has mode 1777") << "as of /tmp";
}

TEST_F(SettingsCtlCheckOfTheSocket, SaysNothingWithoutASocket) {
    EXPECT_EQ(linesOf(checkSocket("socket", folder / "none/settings.sock")), Lines{});
}

TEST(SettingsCtlCheckOfTheStatus, FindsNothingWrong) {
    ::setenv("TZ", "UTC", 1);
    EXPECT_EQ(linesOf(status(R"("health":{"status":"ok","storage":{"writable":true,"keys":3,"failures":0}},)"
                             R"("disk":{"free":16777216,"total":33554432},"newest":{"timezone":1766000000000},)"
                             R"("now":1766000000000)")),
              (Lines{"ok versions: host " SETTINGS_HANDLER_VERSION ", wire 1.1.0",
                     "ok storage: values stored: 3, operations failed since the start: 0",
                     "ok disk: 16 MiB of 32 MiB free", "ok clock: the host's clock reads 2025-12-17 19:33:20"}));
}

TEST(SettingsCtlCheckOfTheStatus, ReportsVersionsThatDiffer) {
    const std::string what =
        "; " + ownVersions + ": restart the host after an update, or install both in the same version";
    EXPECT_EQ(linesOf(R"({"versions":{"host":"0.9.9","wire":"1.1.0"}})"),
              Lines{"wrong versions: host 0.9.9, wire 1.1.0" + what});
    EXPECT_EQ(linesOf(R"({"versions":{"host":")" SETTINGS_HANDLER_VERSION R"(","wire":"1.2.0"}})"),
              Lines{"wrong versions: host " SETTINGS_HANDLER_VERSION ", wire 1.2.0" + what});
    EXPECT_EQ(linesOf("{}"), Lines{"wrong versions: host unknown, wire unknown" + what});
}

TEST(SettingsCtlCheckOfTheStatus, ReportsTheStorageThatFails) {
    const auto lineFor = [](const std::string& health) { return linesOf(status("\"health\":" + health)).at(1); };
    EXPECT_EQ(lineFor(R"({"status":"degraded","storage":{"writable":false,"failures":1,"lastFailure":"disk full"}})"),
              "wrong storage: changes do not reach the disk (disk full): see the host's log, and check the disk");
    EXPECT_EQ(lineFor(R"({"status":"recovered","storage":{"writable":true,"recoveredFrom":"backup"}})"),
              "wrong storage: the database was damaged or missing, values are those of backup: check the settings and "
              "the disk, then restart the host");
    EXPECT_EQ(lineFor(R"({"status":"not-serving"})"), "wrong storage: the host says 'not-serving': see its log");
    EXPECT_EQ(lineFor(R"({"status":"ok","storage":{"keys":3,"failures":2,"lastFailure":"disk full"}})"),
              "ok storage: values stored: 3, operations failed since the start: 2 (disk full)");
}

TEST(SettingsCtlCheckOfTheStatus, ReportsADiskThatIsNearlyFull) {
    EXPECT_EQ(linesOf(status(R"("disk":{"free":16777215,"total":33554432})")).at(1),
              "wrong disk: 15 MiB of 32 MiB free: free 16 MiB, or changes will be refused");
}

TEST(SettingsCtlCheckOfTheStatus, ReportsAClockBehindATimeStamp) {
    ::setenv("TZ", "UTC", 1);
    const auto lineFor = [](const std::string& newest) {
        return linesOf(status("\"newest\":" + newest + R"(,"now":1766000000000)")).at(1);
    };
    EXPECT_EQ(lineFor(R"({"deviceName":1700000000000,"timezone":1766000001000})"),
              "wrong clock: the host's clock reads 2025-12-17 19:33:20, but 'timezone' has a time stamp in the future "
              "(2025-12-17 "
              "19:33:21), so changes of it are refused until then: set the clock, or use 'settingsctl set --force'");
    EXPECT_EQ(
        lineFor(R"({"":9223372036854775807})"),
        "wrong clock: the host's clock reads 2025-12-17 19:33:20, but a setting that is not in the catalogue has a "
        "time stamp "
        "in the future (292278994-08-17 07:12:55), so changes of it are refused until then: set the clock, or use "
        "'settingsctl set --force'");
    EXPECT_EQ(linesOf(status(R"("now":5000)")).at(1),
              "wrong clock: the host's clock reads 1970-01-01 00:00:05: set the clock");
}

TEST(SettingsCtlCheckOfThePages, LeavesTheKeyOut) {
    EXPECT_EQ(linesOf({checkPages("http://127.0.0.1:8097/?key=secret")}), Lines{"ok pages: http://127.0.0.1:8097/"});
    EXPECT_EQ(linesOf({checkPages(std::nullopt)}),
              Lines{"wrong pages: the host serves none: start it without --no-web, and with --pages DIR"});
}
