#include <algorithm>
#include <cstdlib>
#include <optional>
#include <sstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "FakeHost.h"
#include "RunningHost.h"
#include "Terminal.h"
#include "Wire/Catalogue.h"

using namespace SettingsCtlTests;

namespace {

using Words = std::vector<std::string>;

const Words verbs{"get",    "set",    "reset",  "undo",     "watch",         "history", "explain",
                  "list",   "dump",   "load",   "selected", "open-settings", "logout",  "page",
                  "backup", "doctor", "record", "replay",   "device"};
const Words deviceVerbs{"show",           "locale",  "locales", "timezone", "handsfree", "captions",
                        "do-not-disturb", "setting", "faults",  "fault",    "save"};

/// The keys of the catalogue that begin with `prefix`.
Words keys(const std::string& prefix = "") {
    Words result;
    for (const auto& setting : Wire::catalogue()) {
        if (setting.key.rfind(prefix, 0) == 0) {
            result.push_back(setting.key);
        }
    }
    return result;
}

/// What `settingsctl complete` prints without a host.
std::string printed(const Words& words) {
    Words command{SETTINGSCTL_PROGRAM, "complete"};
    command.insert(command.end(), words.begin(), words.end());
    const TestSupport::Finished end = TestSupport::run(command, {{"XDG_RUNTIME_DIR", "/nowhere"}});
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.status, 0);
    return end.output;
}

/// The completions in it, without their descriptions.
Words completions(const Words& words) {
    Words result;
    std::istringstream lines(printed(words));
    for (std::string line; std::getline(lines, line);) {
        EXPECT_NE(line.find('\t'), std::string::npos) << line;
        result.push_back(line.substr(0, line.find('\t')));
    }
    return result;
}

bool has(const Words& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool systemHasAHost() {
    return ::access("/run/settings-host", F_OK) == 0;
}

}  // namespace

TEST(SettingsCtlComplete, PrintsVerbsWithTheDescriptionsOfTheHelp) {
    EXPECT_EQ(completions({""}), verbs);
    EXPECT_EQ(completions({}), verbs);
    EXPECT_EQ(completions({"--json", "device", ""}), deviceVerbs);
    EXPECT_NE(printed({""}).find("\nreset\tSet KEY to its default and print the result\n"), std::string::npos);
}

TEST(SettingsCtlComplete, IsHidden) {
    const std::string help = TestSupport::run({SETTINGSCTL_PROGRAM, "--help"}).output;
    EXPECT_EQ(help.find("complete"), std::string::npos) << help;
    EXPECT_FALSE(has(completions({"c"}), "complete"));
}

TEST(SettingsCtlComplete, PrintsTheKeysOfTheCatalogueWithTheirDescriptions) {
    EXPECT_EQ(completions({"get", "deviceName", ""}), keys());
    for (const std::string verb : {"set", "reset", "undo", "history", "explain"}) {
        EXPECT_EQ(completions({verb, "--", ""}), keys()) << verb;
    }
    EXPECT_EQ(completions({"history", "deviceName", ""}), Words{});
    EXPECT_EQ(completions({"device", "setting", ""}), keys());
    EXPECT_NE(printed({"get", ""}).find("\ncaptionsFontSize\tText size of captions.\n"), std::string::npos);
}

TEST(SettingsCtlComplete, PrintsTheValuesOfEverySettingOfTheCatalogue) {
    if (systemHasAHost()) {
        GTEST_SKIP() << "the host of this machine may reply";
    }
    for (const auto& setting : Wire::catalogue()) {
        EXPECT_EQ(completions({"set", setting.key, ""}), setting.values) << setting.key;
        EXPECT_EQ(completions({"device", "setting", setting.key, ""}), setting.values) << setting.key;
    }
    EXPECT_EQ(completions({"set", "noSuchKey", ""}), Words{});
    EXPECT_EQ(completions({"set", "\xff", ""}), Words{});
    EXPECT_EQ(completions({"device", "locale", ""}), Words{});
}

TEST(SettingsCtlComplete, PrintsTheOptionsThatMayStillBeGiven) {
    EXPECT_EQ(completions({"page", "--"}), (Words{"--help", "--new-key", "--socket", "--device-socket", "--json",
                                                  "--value", "--quiet", "--timeout", "--version"}));
    EXPECT_EQ(completions({"--value", "--socket=x", "get", "--timeout", "1", "-"}),
              (Words{"--help", "--any-key", "--device-socket", "--quiet", "--version"}));
    EXPECT_EQ(completions({"load", "--"}), (Words{"--help", "--any-key", "--dry-run", "--socket", "--device-socket",
                                                  "--json", "--value", "--quiet", "--timeout", "--version"}));
    EXPECT_EQ(completions({"get", "--", "--"}), keys());
}

TEST(SettingsCtlComplete, LeavesTheNamesOfSocketsToTheShell) {
    for (const Words& words : {Words{"--socket", ""},
                               {"get", "--device-socket", "/r"},
                               {"--socket", "="},
                               {"--socket", "=", "/r"},
                               {"--socket=/r"}}) {
        EXPECT_EQ(printed(words), "files\n") << testing::PrintToString(words);
    }
    for (const Words& words : {Words{"--timeout", ""}, {"--timeout=1"}, {"--no-such-option=1"}}) {
        EXPECT_EQ(printed(words), "") << testing::PrintToString(words);
    }
}

TEST(SettingsCtlComplete, LeavesTheNamesOfFilesToTheShell) {
    EXPECT_EQ(printed({"load", ""}), "files\n");
    EXPECT_EQ(printed({"replay", ""}), "files\n");
    EXPECT_EQ(printed({"record", ""}), "files\n");
    EXPECT_EQ(printed({"load", "--dry-run", "/r"}), "files\n");
    EXPECT_EQ(printed({"load", "settings.json", ""}), "");
}

TEST(SettingsCtlComplete, ConnectsToTheHostForACurrentValueOnly) {
    const FakeHost host;
    for (const Words& words : {Words{""},
                               {"get", ""},
                               {"set", ""},
                               {"device", "captions", ""},
                               {"set", "k", "v", ""},
                               {"device", "locale", ""},
                               {"watch", "--"}}) {
        Words arguments{"complete", "--socket", host.settingsPath()};
        arguments.insert(arguments.end(), words.begin(), words.end());
        auto program = host.start(arguments);
        EXPECT_EQ(finish(program).status, 0);
    }
    auto program = host.start({"complete", "--socket", host.settingsPath(), "set", "k", ""});
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(client.receiveLine(), getRequest(program, 1, R"(["k"])"));
    client.sendLine(getReply(program, 1, R"({"k":"current value"})"));
    expectEnd(program, 0, "current value\t\n", "");
}

namespace {

/// Control and U.
constexpr const char* killLine = "\x15";

struct Shell {
    const char* name;
    std::vector<std::string> command;
    std::map<std::string, std::string> environment;

    friend void PrintTo(const Shell& shell, std::ostream* out) { *out << shell.name; }
};

/// An interactive shell in a terminal, with the completion loaded, next to a running host.
class SettingsCtlCompletion : public testing::TestWithParam<Shell> {
protected:
    void SetUp() override {
        const std::string program = GetParam().command.front();
        if (TestSupport::run({"sh", "-c", "command -v " + program}).status != 0) {
            GTEST_SKIP() << program << " is not installed";
        }
    }

    std::map<std::string, std::string> environment(const std::string& runtimeFolder) const {
        auto variables = GetParam().environment;
        variables["COMPLETIONS"] = COMPLETION_FOLDER;
        variables["XDG_RUNTIME_DIR"] = runtimeFolder;
        const char* const path = std::getenv("PATH");
        variables["PATH"] = PROGRAM_FOLDER ":" + std::string(path == nullptr ? "" : path);
        variables["TERM"] = "dumb";
        return variables;
    }

    /// What the shell completes when Tab is pressed after `typed`.
    static Words completed(const std::string& typed, Terminal& terminal) {
        terminal.type(typed + "\t");
        terminal.readUntil("<completions>\r\n");
        std::istringstream lines(terminal.readUntil("</completions>"));
        Words words;
        for (std::string line; std::getline(lines, line);) {
            words.push_back(line.substr(0, line.find('\r')));
        }
        terminal.type(killLine);
        return words;
    }
    Words completed(const std::string& typed) {
        if (!withHost) {
            withHost.emplace(GetParam().command, environment(host.runtimeFolder()));
            withHost->readUntil("<prompt>");
        }
        return completed(typed, *withHost);
    }
    Words completedWithoutHost(const std::string& typed) {
        if (!withoutHost) {
            withoutHost.emplace(GetParam().command, environment("/nowhere"));
            withoutHost->readUntil("<prompt>");
        }
        return completed(typed, *withoutHost);
    }

    const RunningHost host;
    std::optional<Terminal> withHost;
    std::optional<Terminal> withoutHost;
};

}  // namespace

TEST_P(SettingsCtlCompletion, CompletesVerbs) {
    EXPECT_EQ(completed("settingsctl "), verbs);
    EXPECT_EQ(completed("settingsctl --quiet s"), (Words{"set", "selected"}));
    EXPECT_EQ(completed("settingsctl device "), deviceVerbs);
    EXPECT_EQ(completed("settingsctl device loca"), (Words{"locale", "locales"}));
}

TEST_P(SettingsCtlCompletion, CompletesKeys) {
    EXPECT_EQ(completed("settingsctl get "), keys());
    EXPECT_EQ(completed("settingsctl get timezone captions"), keys("captions"));
    EXPECT_EQ(completed("settingsctl set --json "), keys());
    EXPECT_EQ(completed("settingsctl set deviceName Den f"), Words{"friendlyName"});
    EXPECT_EQ(completed("settingsctl device setting f"), Words{"friendlyName"});
}

TEST_P(SettingsCtlCompletion, AsksTheHostOfTheCommandLine) {
    const std::string socket = host.socketPath();
    const Words current{"America/Vancouver"};
    EXPECT_EQ(completedWithoutHost("settingsctl --socket " + socket + " set timezone "), current);
    EXPECT_EQ(completedWithoutHost("settingsctl --socket=" + socket + " set timezone "), current);
    EXPECT_EQ(completed("settingsctl --socket /nowhere/settings.sock set timezone "), Words{});
}

TEST_P(SettingsCtlCompletion, CompletesTheSocketsPath) {
    const std::string folder = host.runtimeFolder() + "/settings-host/";
    for (const std::string option : {"--socket ", "--socket=", "get --device-socket="}) {
        const Words words = completed(std::string("settingsctl ").append(option).append(folder).append("sett"));
        ASSERT_EQ(words.size(), 1U) << option;
        EXPECT_EQ(words.front().substr(words.front().rfind('/') + 1), "settings.sock") << option;
    }
}

TEST_P(SettingsCtlCompletion, CompletesKnownValuesAndTheCurrentOne) {
    EXPECT_EQ(completed("settingsctl set handsFreeEnabled "), (Words{"true", "false"}));
    Words sizes{"FONT_SMALL", "FONT_MEDIUM", "FONT_LARGE", "FONT_EXTRA_LARGE"};
    EXPECT_EQ(completed("settingsctl set captionsFontSize "), sizes);
    ASSERT_EQ(host.run({"set", "captionsFontSize", "FONT_HUGE"}).status, 0);
    sizes.emplace_back("FONT_HUGE");
    EXPECT_EQ(completed("settingsctl set captionsFontSize "), sizes);
    EXPECT_EQ(completed("settingsctl device setting timezone "), Words{"America/Vancouver"});
    EXPECT_EQ(completed("settingsctl device captions "), (Words{"on", "off"}));
    EXPECT_EQ(completed("settingsctl device handsfree of"), Words{"off"});
}

TEST_P(SettingsCtlCompletion, CompletesOptions) {
    EXPECT_EQ(completed("settingsctl page --n"), Words{"--new-key"});
    EXPECT_EQ(completed("settingsctl list --n"), Words{});
    const Words words = completed("settingsctl get --");
    for (const std::string option :
         {"--socket", "--device-socket", "--json", "--value", "--quiet", "--timeout", "--version", "--help"}) {
        EXPECT_EQ(std::count(words.begin(), words.end(), option), 1) << option;
    }
}

TEST_P(SettingsCtlCompletion, NeedsNoHostForFixedWords) {
    if (systemHasAHost()) {
        GTEST_SKIP() << "the host of this machine may reply";
    }
    EXPECT_EQ(completedWithoutHost("settingsctl sel"), Words{"selected"});
    EXPECT_EQ(completedWithoutHost("settingsctl get "), keys());
    EXPECT_EQ(completedWithoutHost("settingsctl set deviceName "), Words{});
    EXPECT_EQ(completedWithoutHost("settingsctl set pttAlwaysOnEnabled "), (Words{"true", "false"}));
}

TEST_P(SettingsCtlCompletion, CompletesFurtherPairs) {
    EXPECT_EQ(completed("settingsctl set deviceName Den captionsSt"), Words{"captionsStyles"});
    EXPECT_EQ(completed("settingsctl set deviceName Den pttAlwaysOnEnabled "), (Words{"true", "false"}));
}

TEST_P(SettingsCtlCompletion, CompletesTheFaultsOfTheHost) {
    EXPECT_EQ(completed("settingsctl device fault storage-"),
              (Words{"storage-full", "storage-slow", "storage-failing"}));
    EXPECT_EQ(completed("settingsctl device fault sdk-refuses time"), Words{"timezone"});
    EXPECT_EQ(completed("settingsctl device fault storage-slow "), Words{"off"});
    if (!systemHasAHost()) {
        EXPECT_EQ(completedWithoutHost("settingsctl device fault s"), Words{});
    }
}

TEST_P(SettingsCtlCompletion, CompletesNothingWhereNoArgumentIsExpected) {
    for (const std::string typed :
         {"watch ", "undo deviceName ", "device show ", "device captions on ", "--timeout "}) {
        EXPECT_EQ(completed("settingsctl " + typed), Words{}) << typed;
    }
}

TEST_P(SettingsCtlCompletion, LeavesOutAValueThatCannotBeTyped) {
    ASSERT_EQ(host.run({"set", "deviceName", "a\nb"}).status, 0);
    EXPECT_EQ(completed("settingsctl set deviceName "), Words{});
}

TEST_P(SettingsCtlCompletion, QuotesAValueAsOneWord) {
    ASSERT_EQ(host.run({"set", "deviceName", "Bob's \"$HOME\" `x` & [1]"}).status, 0);
    for (const std::string begin : {"Bob", "\"Bob"}) {
        Terminal terminal(GetParam().command, environment(host.runtimeFolder()));
        terminal.readUntil("<prompt>");
        terminal.type("settingsctl set deviceName " + begin + "\t");
        terminal.readUntil("</completions>");
        terminal.type("\n");
        EXPECT_NO_THROW(terminal.readUntil("deviceName: unchanged"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    In, SettingsCtlCompletion,
    testing::Values(Shell{"Bash", {"bash", "--rcfile", COMPLETION_TEST_FOLDER "/completions.bash", "-i"}, {}},
                    Shell{"Zsh", {"zsh", "-d", "-i"}, {{"ZDOTDIR", COMPLETION_TEST_FOLDER}}}),
    [](const auto& suite) { return std::string(suite.param.name); });
