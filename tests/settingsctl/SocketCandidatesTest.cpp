#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "FakeHost.h"
#include "connection/SocketCandidates.h"

using namespace SettingsClient;
using namespace SettingsCtlTests;

namespace {

using Words = std::vector<std::string>;

/// Each as "PATH COMPANION".
Words shown(const std::vector<SocketCandidate>& candidates) {
    Words words;
    for (const auto& candidate : candidates) {
        EXPECT_EQ(candidate.distrust, "");
        words.push_back(candidate.path + " " + candidate.companion);
    }
    return words;
}

const Words systemsSettings{"/run/settings-host/settings.sock /run/settings-host/device.sock"};

Words settings(const SocketOptions& options, const char* runtimeFolder = "/run/user/1") {
    return shown(settingsSockets(options, runtimeFolder));
}

Words device(const SocketOptions& options, const char* runtimeFolder = "/run/user/1") {
    return shown(deviceSockets(options, runtimeFolder));
}

}  // namespace

TEST(SettingsCtlSocketCandidates, AreThoseOfTheUsersAndTheSystemsHost) {
    EXPECT_EQ(settings({}), (Words{"/run/user/1/settings-host/settings.sock /run/user/1/settings-host/device.sock",
                                   "/run/settings-host/settings.sock /run/settings-host/device.sock"}));
    EXPECT_EQ(device({}), (Words{"/run/user/1/settings-host/device.sock /run/user/1/settings-host/settings.sock",
                                 "/run/settings-host/device.sock /run/settings-host/settings.sock"}));
}

TEST(SettingsCtlSocketCandidates, AreInATemporaryFolderOfTheUserWithoutARuntimeFolder) {
    const std::string folder = "/tmp/settings-host-" + std::to_string(::geteuid());
    for (const char* const none : {static_cast<const char*>(nullptr), "", "run/user"}) {
        const auto candidates = settingsSockets({}, none);
        ASSERT_EQ(candidates.size(), 2U);
        EXPECT_EQ(candidates[0].path, folder + "/settings.sock");
        EXPECT_EQ(candidates[0].companion, folder + "/device.sock");
        EXPECT_EQ(candidates[0].distrust, distrustOf(folder));
        EXPECT_EQ(candidates[1].path, "/run/settings-host/settings.sock");
    }
}

TEST(SettingsCtlSocketCandidates, AreOnlyTheGivenSockets) {
    EXPECT_EQ(settings({"/a/x.sock", {}}), Words{"/a/x.sock "});
    EXPECT_EQ(settings({"/a/x.sock", "/b/y.sock"}), Words{"/a/x.sock "});
    EXPECT_EQ(device({"/a/x.sock", "/b/y.sock"}), Words{"/b/y.sock "});
    EXPECT_EQ(device({{}, "/b/y.sock"}), Words{"/b/y.sock "});
    EXPECT_EQ(settings({{}, "/b/y.sock"}), settings({})) << "as with the host, which listens there";
    EXPECT_EQ(settings({"", {}}), Words{" "});
}

TEST(SettingsCtlSocketCandidates, AreInOneFolderWhenTheSettingsSocketIsGiven) {
    EXPECT_EQ(device({"/a/x.sock", {}}), Words{"/a/device.sock "});
    EXPECT_EQ(device({"x.sock", {}}), Words{"device.sock "});
    EXPECT_EQ(device({"", {}}), Words{" "});
}

TEST(SettingsCtlSocketCandidates, AreNotTrustedInAFolderOfOthers) {
    const TestSupport::TemporaryDirectory here;
    EXPECT_EQ(distrustOf(here / "missing"), "");
    const std::string folder = here / "folder";
    std::filesystem::create_directory(folder);
    EXPECT_EQ(distrustOf(folder), "");
    std::filesystem::create_directory_symlink(folder, here / "link");
    EXPECT_EQ(distrustOf(here / "link"), "its folder is a link or not a folder");
    std::ofstream(here / "file") << "a file";
    EXPECT_EQ(distrustOf(here / "file"), "its folder is a link or not a folder");
    for (const auto others : {std::filesystem::perms::group_write, std::filesystem::perms::others_write}) {
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all | others);
        EXPECT_EQ(distrustOf(folder), "its folder is writable by others");
    }
    if (::geteuid() != 0) {
        EXPECT_EQ(distrustOf("/"), "its folder belongs to another user");
    } else {
        constexpr uid_t anotherUser = 12345;
        ASSERT_EQ(::chown(folder.c_str(), anotherUser, anotherUser), 0);
        EXPECT_EQ(distrustOf(folder), "its folder belongs to another user");
    }
}

namespace {

/// A mount namespace with a /run of its own, in which the test takes the role of the system's host.
class SettingsCtlInItsOwnNamespace : public testing::Test {
protected:
    void SetUp() override {
        keeper.emplace(Words{"unshare", "--user", "--map-root-user", "--mount", "sh", "-c",
                             "mount -t tmpfs none /run && mkdir -p /run/settings-host /run/own && echo mounted && "
                             "exec sleep 1000"});
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
        client.sendLine(R"({"type":18,"messageId":"watch","payload":{"isOrliaSelectedAsVA":true}})");
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
