#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "SettingsClient/SocketCandidates.h"
#include "support/TemporaryDirectory.h"

using namespace SettingsClient;

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

TEST(SocketCandidates, AreThoseOfTheUsersAndTheSystemsHost) {
    EXPECT_EQ(settings({}), (Words{"/run/user/1/settings-host/settings.sock /run/user/1/settings-host/device.sock",
                                   "/run/settings-host/settings.sock /run/settings-host/device.sock"}));
    EXPECT_EQ(device({}), (Words{"/run/user/1/settings-host/device.sock /run/user/1/settings-host/settings.sock",
                                 "/run/settings-host/device.sock /run/settings-host/settings.sock"}));
}

TEST(SocketCandidates, AreInATemporaryFolderOfTheUserWithoutARuntimeFolder) {
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

TEST(SocketCandidates, AreOnlyTheGivenSockets) {
    EXPECT_EQ(settings({"/a/x.sock", {}}), Words{"/a/x.sock "});
    EXPECT_EQ(settings({"/a/x.sock", "/b/y.sock"}), Words{"/a/x.sock "});
    EXPECT_EQ(device({"/a/x.sock", "/b/y.sock"}), Words{"/b/y.sock "});
    EXPECT_EQ(device({{}, "/b/y.sock"}), Words{"/b/y.sock "});
    EXPECT_EQ(settings({{}, "/b/y.sock"}), settings({})) << "as with the host, which listens there";
    EXPECT_EQ(settings({"", {}}), Words{" "});
}

TEST(SocketCandidates, AreInOneFolderWhenTheSettingsSocketIsGiven) {
    EXPECT_EQ(device({"/a/x.sock", {}}), Words{"/a/device.sock "});
    EXPECT_EQ(device({"x.sock", {}}), Words{"device.sock "});
    EXPECT_EQ(device({"", {}}), Words{" "});
}

TEST(SocketCandidates, AreNotTrustedInAFolderOfOthers) {
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
