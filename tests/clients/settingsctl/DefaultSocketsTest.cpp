#include <optional>

#include <gtest/gtest.h>

#include "FakeHost.h"

using namespace SettingsCtlTests;

namespace {

using Words = std::vector<std::string>;

/// A mount namespace with its own /run, in which the test takes the role of the system's host.
class SettingsCtlInItsOwnNamespace : public testing::Test {
protected:
    void SetUp() override {
        const std::string script =
            "mount -t tmpfs none /run && mkdir -p /run/settings-host /run/own && echo mounted && exec sleep 1000";
        keeper.emplace(Words{"unshare", "--user", "--map-root-user", "--mount", "sh", "-c", script});
        if (keeper->output().readLine() != "mounted") {
            GTEST_SKIP() << "cannot mount in a user namespace: " << keeper->errors().readAll();
        }
    }

    std::string seenFromHere(const std::string& path) const {
        return "/proc/" + std::to_string(keeper->pid()) + "/root" + path;
    }

    TestSupport::ChildProcess start(Words arguments) const {
        arguments.insert(arguments.begin(), {"nsenter", "--target", std::to_string(keeper->pid()), "--user", "--mount",
                                             "--preserve-credentials", "--", SETTINGSCTL_PROGRAM});
        return TestSupport::ChildProcess(arguments, {{"XDG_RUNTIME_DIR", "/run/own"}});
    }

    std::optional<TestSupport::ChildProcess> keeper;
};

}  // namespace

TEST_F(SettingsCtlInItsOwnNamespace, UsesTheSystemsHostWhenTheUserHasNone) {
    const ListeningSocket settingsSocket(seenFromHere("/run/settings-host/settings.sock"));
    const ListeningSocket deviceSocket(seenFromHere("/run/settings-host/device.sock"));
    {
        auto program = start({"get"});
        Peer client = settingsSocket.accept();
        client.receiveLine();
        client.sendLine(getReply(program, 1, R"({"deviceName":"the system's"})"));
        expectEnd(program, 0, "deviceName=the system's\n", "");
    }
    {
        auto program = start({"watch"});
        Peer client = settingsSocket.accept();
        greet(client, program);
        EXPECT_EQ(program.errors().readLine(), "settingsctl: watching /run/settings-host/settings.sock");
    }
    auto program = start({"device", "show"});
    Peer client = deviceSocket.accept();
    client.sendLine(R"({"device":{"timezone":"the system's"}})");
    expectEnd(program, 0, "timezone=the system's\n", "");
}

TEST_F(SettingsCtlInItsOwnNamespace, PrefersTheUsersOwnHost) {
    const ListeningSocket theSystems(seenFromHere("/run/settings-host/settings.sock"));
    const ListeningSocket theSystemsDevice(seenFromHere("/run/settings-host/device.sock"));
    const ListeningSocket own(seenFromHere("/run/own/settings-host/settings.sock"));
    auto program = start({"get"});
    Peer client = own.accept();
    client.receiveLine();
    client.sendLine(getReply(program, 1, R"({"deviceName":"the user's"})"));
    expectEnd(program, 0, "deviceName=the user's\n", "");

    auto deviceProgram = start({"device", "captions", "on"});
    expectEnd(deviceProgram, 3, "",
              "settingsctl: cannot reach the host at /run/own/settings-host/device.sock: No such file or directory (is "
              "settings-host running?)\n");
}

TEST_F(SettingsCtlInItsOwnNamespace, NamesBothSocketsWhenNoHostRuns) {
    auto program = start({"get"});
    expectEnd(
        program, 3, "",
        "settingsctl: cannot reach the host at /run/own/settings-host/settings.sock: No such file or directory, nor "
        "at /run/settings-host/settings.sock: No such file or directory (is settings-host running?)\n");
    auto deviceProgram = start({"device", "show"});
    expectEnd(
        deviceProgram, 3, "",
        "settingsctl: cannot reach the host at /run/own/settings-host/device.sock: No such file or directory, nor "
        "at /run/settings-host/device.sock: No such file or directory (is settings-host running?)\n");
}

TEST_F(SettingsCtlInItsOwnNamespace, TriesOnlyTheGivenSocket) {
    const ListeningSocket theSystems(seenFromHere("/run/settings-host/settings.sock"));
    const ListeningSocket theSystemsDevice(seenFromHere("/run/settings-host/device.sock"));
    const std::string end = ": No such file or directory (is settings-host running?)\n";
    auto program = start({"--socket", "/run/x/settings.sock", "get"});
    expectEnd(program, 3, "", "settingsctl: cannot reach the host at /run/x/settings.sock" + end);
    auto beside = start({"--socket", "/run/x/settings.sock", "device", "show"});
    expectEnd(beside, 3, "", "settingsctl: cannot reach the host at /run/x/device.sock" + end);
    auto given = start({"--device-socket", "/run/x/d.sock", "device", "show"});
    expectEnd(given, 3, "", "settingsctl: cannot reach the host at /run/x/d.sock" + end);
}
