#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "RunningHost.h"
#include "support/TemporaryDirectory.h"
#include "wire/HostClients.h"

using namespace SettingsCtlTests;

namespace {

using Words = std::vector<std::string>;

/// History, files and administration, with a real host.
class SettingsCtlVerbsAndHost : public testing::Test {
protected:
    TestSupport::Finished run(const Words& arguments) const { return host.run(arguments); }

    void expectRun(const Words& arguments, int status, const std::string& output,
                   const std::string& errors = "") const {
        const TestSupport::Finished end = run(arguments);
        EXPECT_EQ(end.output, output);
        EXPECT_EQ(end.errors, errors);
        EXPECT_EQ(end.status, status) << testing::PrintToString(arguments);
    }

    /// What `history` prints without the times.
    Words changes(const Words& options = {}) const {
        Words arguments{"history"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        std::istringstream lines(run(arguments).output);
        Words result;
        for (std::string line; std::getline(lines, line);) {
            result.push_back(line.substr(std::string("2026-11-22 10:17:49 ").size()));
        }
        return result;
    }

    std::string write(const std::string& text) const {
        std::string file = files / "settings.json";
        std::ofstream(file) << text;
        return file;
    }

    /// The line of a check in what `doctor` prints.
    std::string check(const std::string& name) const {
        std::istringstream lines(run({"doctor"}).output);
        for (std::string line; std::getline(lines, line);) {
            if (line.find(" " + name + ": ") == 5) {
                return line;
            }
        }
        return "";
    }

    const TestSupport::TemporaryDirectory files;
    RunningHost host;
};

}  // namespace

TEST_F(SettingsCtlVerbsAndHost, TellTheHistoryUpToALogOut) {
    EXPECT_EQ(changes(), Words{});
    run({"set", "deviceName", "Den"});
    run({"device", "setting", "friendlyName", "Attic"});
    run({"reset", "deviceName"});
    EXPECT_EQ(changes(),
              (Words{"deviceName: 'TV' -> 'Den' (settingsctl, socket)", "friendlyName: 'TV' -> 'Attic' (device)",
                     "deviceName: 'Den' -> 'TV' (settingsctl, socket)"}));
    EXPECT_EQ(changes({"friendlyName"}), Words{"friendlyName: 'TV' -> 'Attic' (device)"});
    run({"logout"});
    EXPECT_EQ(changes({"deviceName"}), Words{});
    expectRun({"undo", "deviceName"}, 1, "",
              "settingsctl: cannot undo 'deviceName': the host has no record of a change\n");
}

TEST_F(SettingsCtlVerbsAndHost, UndoTwiceIsARedo) {
    run({"set", "deviceName", "Den"});
    run({"set", "friendlyName", "Attic"});
    expectRun({"undo", "deviceName"}, 0, "deviceName: 'Den' -> 'TV'\n");
    expectRun({"undo", "deviceName"}, 0, "deviceName: 'TV' -> 'Den'\n");
    expectRun({"get", "deviceName", "friendlyName"}, 0, "deviceName=Den\nfriendlyName=Attic\n");
}

TEST_F(SettingsCtlVerbsAndHost, ResetToTheDefault) {
    run({"set", "captionsFontSize", "FONT_LARGE"});
    expectRun({"reset", "captionsFontSize"}, 0, "captionsFontSize: 'FONT_LARGE' -> 'FONT_MEDIUM'\n");
    expectRun({"reset", "captionsFontSize"}, 0, "captionsFontSize: unchanged\n");
}

TEST_F(SettingsCtlVerbsAndHost, ExplainEverySetting) {
    run({"set", "deviceName", "Den"});
    const std::string text = run({"explain", "deviceName"}).output;
    EXPECT_EQ(text.rfind("deviceName: Name that the television uses for itself.\n  value    'Den'\n  changed  2", 0),
              0U)
        << text;
    EXPECT_NE(text.find(" from 'TV' (settingsctl, socket)\n  default  'TV'\n"), std::string::npos) << text;
    const std::string all = run({"explain"}).output;
    std::istringstream keys(run({"list"}).output);
    for (std::string key; std::getline(keys, key);) {
        EXPECT_NE(("\n" + all).find("\n" + key + ": "), std::string::npos) << key;
    }
}

TEST_F(SettingsCtlVerbsAndHost, LoadWhatWasDumped) {
    run({"set", "deviceName", "a\n\x1b\"\\Küche", "orliaLocale", R"(["fr-FR","en-US"])"});
    const std::string dumped = run({"dump"}).output;
    const std::string file = write(dumped);
    run({"reset", "deviceName"});
    run({"set", "orliaLocale", R"(["de-DE"])", "timezone", "UTC"});
    const std::string lines =
        "deviceName: 'TV' -> 'a\\n\\x1b\"\\\\Küche'\n"
        "orliaLocale: '[\"de-DE\"]' -> '[\"fr-FR\",\"en-US\"]'\n"
        "timezone: 'UTC' -> 'America/Vancouver'\n";
    expectRun({"load", "--dry-run", file}, 0, lines);
    EXPECT_EQ(run({"get", "--value", "timezone"}).output, "UTC\n") << "a dry run sets nothing";
    const TestSupport::Finished loaded = run({"load", file});
    EXPECT_NE(loaded.output.find("deviceName: 'TV' -> "), std::string::npos) << loaded.output;
    EXPECT_NE(loaded.output.find("friendlyName: unchanged\n"), std::string::npos) << loaded.output;
    EXPECT_EQ(loaded.errors, "");
    EXPECT_EQ(loaded.status, 0);
    EXPECT_EQ(run({"dump"}).output, dumped);
    EXPECT_EQ(run({"load", "--dry-run", file}).output, "");
}

TEST_F(SettingsCtlVerbsAndHost, LoadWhatIsAccepted) {
    const std::string file = write(
        R"({"deviceName":"Den","DeviceName":"x","captionsEnabled":"true","orliaLocale":"fr-FR","timezone":1,"friendlyName":")" +
        std::string(66000, 'v') + "\"}");
    expectRun({"load", file}, 1, "deviceName: 'TV' -> 'Den'\n",
              "settingsctl: unknown key 'DeviceName'; did you mean 'deviceName'? --any-key accepts any key\n"
              "settingsctl: 'timezone' was refused: its value must be a string\n"
              "settingsctl: 'captionsEnabled' was refused: only the device can change it: use 'settingsctl device "
              "captions on|off'\n"
              "settingsctl: 'friendlyName' was refused: the frame is larger than 64 KiB\n"
              "settingsctl: 'orliaLocale' was refused: it must be a JSON array with at least one locale, for example "
              "[\"en-US\"]\n");
    expectRun({"get", "deviceName"}, 0, "deviceName=Den\n");
}

TEST_F(SettingsCtlVerbsAndHost, LoadMoreThanOneFrame) {
    std::string text = "{";
    for (int number = 0; number < 130; ++number) {
        text += (number == 0 ? "\"k" : ",\"k") + std::to_string(number) + "\":\"" + std::string(1500, 'v') + "\"";
    }
    const TestSupport::Finished end = run({"load", "--any-key", "--quiet", write(text + "}")});
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(run({"get", "--any-key", "--value", "k0", "k129"}).output,
              std::string(1500, 'v') + "\n" + std::string(1500, 'v') + "\n");
}

TEST_F(SettingsCtlVerbsAndHost, BackUpTheDatabase) {
    run({"set", "deviceName", "Den"});
    const std::string file = host.storagePath() + ".backup.1";
    expectRun({"backup"}, 0, file + "\n");
    EXPECT_TRUE(std::filesystem::exists(file));
    expectRun({"backup", "--json"}, 0, R"({"backup":{"file":")" + file + "\"}}\n");
}

TEST_F(SettingsCtlVerbsAndHost, FindWhatIsWrong) {
    EXPECT_EQ(check("pages"), "wrong pages: the host serves none: start it without --no-web, and with --pages DIR");
    EXPECT_EQ(run({"doctor"}).status, 1);
    EXPECT_EQ(check("socket"), "ok    socket: " + host.socketPath() + " has mode 0600");
    EXPECT_EQ(check("clock").rfind("ok    clock: the host's clock reads 20", 0), 0U);

    ::chmod(host.socketPath().c_str(), 0666);
    EXPECT_EQ(check("socket").rfind("wrong socket: " + host.socketPath() + " has mode 0666, so every user can ", 0),
              0U);
    WireTests::HostClient client(host.socketPath());
    client.sendLine(R"({"type":24,"timestamp":9000000000000,"payload":{"settingDBId":"deviceName","to":"Den"}})");
    ASSERT_TRUE(client.receiveLine());
    const std::string clock = check("clock");
    EXPECT_NE(clock.find(", but 'deviceName' has a time stamp in the future (2255-"), std::string::npos) << clock;

    host.stop();
    const TestSupport::Finished end = run({"doctor"});
    EXPECT_EQ(end.output.rfind("wrong host: cannot reach the host at " + host.socketPath(), 0), 0U) << end.output;
    EXPECT_EQ(end.status, 1);
}

TEST(SettingsCtlVerbsAndPages, FindNothingWrongAndReplaceTheKey) {
    const TestSupport::TemporaryDirectory pages;
    std::ofstream(pages / "index.html") << "<!DOCTYPE html>";
    const RunningHost host({"--listen", "127.0.0.1:0", "--pages", pages.path().string()});
    const TestSupport::Finished doctor = host.run({"doctor"});
    EXPECT_EQ(doctor.output.find("wrong"), std::string::npos) << doctor.output;
    EXPECT_NE(doctor.output.find("\nok    pages: http://127.0.0.1:"), std::string::npos) << doctor.output;
    EXPECT_EQ(doctor.output.find("key"), std::string::npos) << doctor.output;
    EXPECT_EQ(doctor.status, 0);

    const std::string address = host.run({"page"}).output;
    EXPECT_NE(address.find("/?key="), std::string::npos) << address;
    EXPECT_EQ(host.run({"page"}).output, address);
    const std::string renewed = host.run({"page", "--new-key"}).output;
    EXPECT_NE(renewed.find("/?key="), std::string::npos) << renewed;
    EXPECT_NE(renewed, address);
}
