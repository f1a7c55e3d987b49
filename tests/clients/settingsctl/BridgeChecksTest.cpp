#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Checks.h"
#include "bridge/StatusFile.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

using SettingsBridge::StatusFile;

namespace {

constexpr const char* program = "settings-mqtt";

/// As the service manager makes a folder for the bridge; the user's own folder comes first.
class SettingsCtlCheckOfABridge : public testing::Test {
protected:
    SettingsCtlCheckOfABridge() {
        std::filesystem::create_directories(runtimeFolder);
        ::setenv("RUNTIME_DIRECTORY", runtimeFolder.c_str(), 1);
    }
    void TearDown() override { ::unsetenv("RUNTIME_DIRECTORY"); }

    std::string check() const {
        const auto finding =
            SettingsCtl::checkBridge(program, {folder / "none:" + (folder / "bin"), {folder / "user", folder / "run"}});
        return (finding.ok ? "ok " : "wrong ") + finding.check + ": " + finding.text;
    }

    const TestSupport::TemporaryDirectory folder;
    const std::string runtimeFolder = folder / "run/settings-mqtt";
    const std::string path = runtimeFolder + "/status.json";
};

}  // namespace

TEST_F(SettingsCtlCheckOfABridge, SaysWhetherItIsInstalled) {
    EXPECT_EQ(check(), "ok settings-mqtt: not installed");
    std::filesystem::create_directory(folder / "bin");
    std::ofstream(folder / "bin/settings-mqtt").close();
    EXPECT_EQ(check(), "ok settings-mqtt: not installed") << "not a program";
    ::chmod((folder / "bin/settings-mqtt").c_str(), 0755);
    EXPECT_EQ(check(), "ok settings-mqtt: installed, not running");
}

TEST_F(SettingsCtlCheckOfABridge, SaysWhatARunningOneSays) {
    std::optional<StatusFile> status(std::in_place, program, SETTINGS_HANDLER_VERSION);
    status->write(false, "the broker cannot be reached: Connection refused");
    EXPECT_EQ(check(), "wrong settings-mqtt: the broker cannot be reached: Connection refused: see its log");
    status->write(true, "connected to host and broker");
    EXPECT_EQ(check(), "ok settings-mqtt: connected to host and broker");
    EXPECT_EQ(TestSupport::modeOf(path), 0644U) << "settingsctl runs as another user";
    status.reset();
    EXPECT_EQ(check(), "ok settings-mqtt: not installed");
}

TEST_F(SettingsCtlCheckOfABridge, FindsTheOneThatAUserStarted) {
    ::unsetenv("RUNTIME_DIRECTORY");
    std::filesystem::create_directory(folder / "user");
    ::setenv("XDG_RUNTIME_DIR", (folder / "user").c_str(), 1);
    StatusFile status(program, SETTINGS_HANDLER_VERSION);
    ::unsetenv("XDG_RUNTIME_DIR");
    status.write(true, "connected to host and broker");
    EXPECT_EQ(check(), "ok settings-mqtt: connected to host and broker");
}

TEST_F(SettingsCtlCheckOfABridge, ReportsACrash) {
    std::ofstream(path) << R"({"version":")" SETTINGS_HANDLER_VERSION R"(","connected":true,"text":"connected"})";
    EXPECT_EQ(check(), "wrong settings-mqtt: it has crashed: see its log, then start it");
    StatusFile startedAgain(program, SETTINGS_HANDLER_VERSION);
    startedAgain.write(true, "connected to host and broker");
    EXPECT_EQ(check(), "ok settings-mqtt: connected to host and broker");
}

TEST_F(SettingsCtlCheckOfABridge, ReportsAnOldVersion) {
    StatusFile status(program, "0.9.0");
    status.write(true, "connected to host and broker");
    EXPECT_EQ(check(), "wrong settings-mqtt: version 0.9.0; settingsctl " SETTINGS_HANDLER_VERSION
                       ": restart it after an update");
}

TEST_F(SettingsCtlCheckOfABridge, ReportsAStatusThatIsNone) {
    const StatusFile status(program, SETTINGS_HANDLER_VERSION);
    EXPECT_EQ(check(), "wrong settings-mqtt: its status file is malformed: restart it") << "empty";
    std::filesystem::remove(path);
    std::filesystem::create_symlink(folder / "elsewhere", path);
    EXPECT_EQ(check(), "wrong settings-mqtt: " + path + " cannot be read: Too many levels of symbolic links");
}

TEST_F(SettingsCtlCheckOfABridge, DoesNotConfuseTwoProcesses) {
    StatusFile first(program, SETTINGS_HANDLER_VERSION);
    first.write(true, "the first");
    StatusFile second(program, SETTINGS_HANDLER_VERSION);
    second.write(false, "the second");
    EXPECT_EQ(check(), "ok settings-mqtt: the first");
}
