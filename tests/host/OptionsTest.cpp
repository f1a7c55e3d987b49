#include <cstdlib>

#include "Options.h"

namespace SettingsHost {

using namespace SettingsHandlerKit;

class OptionsTest : public ::testing::Test {
protected:
    OptionsTest() {
        for (const auto* name : {"XDG_STATE_HOME", "XDG_RUNTIME_DIR", "HOME"}) {
            const char* const value = std::getenv(name);
            before[name] = value == nullptr ? "" : value;
        }
        set("HOME", "/home/somebody");
        set("XDG_STATE_HOME", "");
        set("XDG_RUNTIME_DIR", "");
    }

    void TearDown() override {
        for (const auto& [name, value] : before) {
            set(name, value);
        }
    }

    static void set(const std::string& name, const std::string& value) { ::setenv(name.c_str(), value.c_str(), 1); }

    static Options parse(std::vector<const char*> arguments) {
        arguments.insert(arguments.begin(), "settings-host");
        return parseOptions(static_cast<int>(arguments.size()), arguments.data());
    }

    static int statusOf(const std::vector<const char*>& arguments) {
        try {
            parse(arguments);
        } catch (const CommandLineEnd& end) {
            EXPECT_STRNE(end.what(), "");
            return end.exitStatus();
        }
        return -1;
    }

    std::map<std::string, std::string> before;
};

TEST_F(OptionsTest, DefaultsWithoutXdgFolders) {
    for (const auto* useless : {"", "relative/folder"}) {
        set("XDG_STATE_HOME", useless);
        set("XDG_RUNTIME_DIR", useless);
        const Options options = parse({});
        const std::string runtime = "/tmp/settings-host-" + std::to_string(::geteuid());
        EXPECT_EQ(options.storageFile, "/home/somebody/.local/state/settings-host/settings.db");
        EXPECT_EQ(options.socketPath, runtime + "/settings.sock");
        EXPECT_EQ(options.deviceSocketPath, runtime + "/device.sock");
        EXPECT_EQ(options.log.minimumLevel, 1);
        EXPECT_EQ(options.log.format, LogFormat::TEXT);
    }
}

TEST_F(OptionsTest, DefaultsInXdgFolders) {
    set("XDG_STATE_HOME", "/state");
    set("XDG_RUNTIME_DIR", "/run/user/1");
    const Options options = parse({});
    EXPECT_EQ(options.storageFile, "/state/settings-host/settings.db");
    EXPECT_EQ(options.socketPath, "/run/user/1/settings-host/settings.sock");
    EXPECT_EQ(options.deviceSocketPath, "/run/user/1/settings-host/device.sock");
}

TEST_F(OptionsTest, EveryOptionIsTaken) {
    const Options options = parse({"--storage", "/a", "--socket", "/b", "--device-socket", "/c", "--no-web",
                                   "--log-level", "3", "--log-format", "json"});
    EXPECT_EQ(options.storageFile, "/a");
    EXPECT_EQ(options.socketPath, "/b");
    EXPECT_EQ(options.deviceSocketPath, "/c");
    EXPECT_EQ(options.log.minimumLevel, 3);
    EXPECT_EQ(options.log.format, LogFormat::JSON);
    EXPECT_FALSE(options.listen);
}

TEST_F(OptionsTest, PagesAreServedByDefault) {
    EXPECT_EQ(parse({}).listen.value(), "127.0.0.1:8097");
    const Options options =
        parse({"--listen", "[::1]:9000", "--pages", "/pages", "--allow-origin", "http://localhost:5173"});
    EXPECT_EQ(options.listen.value(), "[::1]:9000");
    EXPECT_EQ(options.pagesFolder, "/pages");
    EXPECT_EQ(options.allowedOrigin, "http://localhost:5173");
}

TEST_F(OptionsTest, RefusesInvalidAddressesAndOrigins) {
    EXPECT_EQ(statusOf({"--listen", "0.0.0.0:8097"}), 2);
    EXPECT_EQ(statusOf({"--listen", "127.0.0.1"}), 2);
    EXPECT_EQ(statusOf({"--listen", "127.0.0.1:1", "--no-web"}), 2);
    EXPECT_EQ(statusOf({"--allow-origin", "*"}), 2);
    EXPECT_EQ(statusOf({"--allow-origin", "http://localhost:5173/"}), 2);
    EXPECT_EQ(statusOf({"--pages", ""}), 2);
}

TEST_F(OptionsTest, HelpAndVersionEndWithZeroAndWrongUsageWithTwo) {
    EXPECT_EQ(statusOf({"--help"}), 0);
    EXPECT_EQ(statusOf({"--version"}), 0);
    for (const auto& wrong : std::vector<std::vector<const char*>>{{"--bogus"},
                                                                   {"--log-level", "4"},
                                                                   {"--log-level", "-1"},
                                                                   {"--log-level", "x"},
                                                                   {"--log-format", "xml"},
                                                                   {"--storage"},
                                                                   {"stray"}}) {
        EXPECT_EQ(statusOf(wrong), 2) << wrong[0];
    }
}

TEST_F(OptionsTest, YesNeedsReset) {
    EXPECT_FALSE(parse({}).reset);
    EXPECT_TRUE(parse({"--reset"}).reset);
    EXPECT_FALSE(parse({"--reset"}).resetConfirmed);
    EXPECT_TRUE(parse({"--yes", "--reset"}).resetConfirmed);
    EXPECT_EQ(statusOf({"--yes"}), 2);
}

TEST_F(OptionsTest, AnEmptyPathIsWrongUsage) {
    for (const auto* option : {"--storage", "--socket", "--device-socket"}) {
        EXPECT_EQ(statusOf({option, ""}), 2) << option;
    }
}

TEST_F(OptionsTest, WithoutAnyFolderTheDatabaseMustBeNamed) {
    set("HOME", "");
    EXPECT_EQ(statusOf({}), 2);
    EXPECT_EQ(parse({"--storage", "/a"}).storageFile, "/a");
}

TEST_F(OptionsTest, TheLastOfRepeatedOptionsCounts) {
    EXPECT_EQ(parse({"--log-level", "3", "--log-level", "0"}).log.minimumLevel, 0);
}

}  // namespace SettingsHost
