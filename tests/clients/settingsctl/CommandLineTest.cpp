#include <sstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "FakeHost.h"
#include "Version.h"

namespace {

using TestSupport::Finished;

Finished runProgram(std::vector<std::string> arguments, const std::map<std::string, std::string>& environment = {}) {
    arguments.insert(arguments.begin(), SETTINGSCTL_PROGRAM);
    return TestSupport::run(arguments, environment);
}

/// The verbs of the program, or of one of its verbs.
std::vector<std::string> verbsOf(const std::vector<std::string>& parent) {
    std::vector<std::string> arguments{"complete"};
    arguments.insert(arguments.end(), parent.begin(), parent.end());
    arguments.emplace_back("");
    std::vector<std::string> verbs;
    std::istringstream lines(runProgram(arguments).output);
    for (std::string line; std::getline(lines, line);) {
        verbs.push_back(line.substr(0, line.find('\t')));
    }
    return verbs;
}

struct Misuse {
    std::vector<std::string> arguments;
    std::string message;
};

const std::vector<Misuse> misuses{
    {{}, "VERB is required, for example 'settingsctl get'; see settingsctl --help"},
    {{"device"}, "VERB is required, for example 'settingsctl get'; see settingsctl --help"},
    {{"--json"}, "VERB is required, for example 'settingsctl get'; see settingsctl --help"},
    {{"put"}, "The following argument was not expected: put; see settingsctl --help"},
    {{"device", "eject"}, "The following argument was not expected: eject; see settingsctl --help"},
    {{"\x1b[31m"}, "The following argument was not expected: \\x1b[31m; see settingsctl --help"},
    {{"set"}, "KEY is required; see settingsctl --help"},
    {{"set", "k"}, "VALUE is required; see settingsctl --help"},
    {{"set", "k", "v", "w"}, "'w' has no VALUE"},
    {{"set", "k", "--v"}, "VALUE is required; see settingsctl --help"},
    {{"list", "k"}, "The following argument was not expected: k; see settingsctl --help"},
    {{"device", "locale"}, "VALUE is required; see settingsctl --help"},
    {{"device", "locales"}, "LOCALE is required; see settingsctl --help"},
    {{"device", "captions", "true"}, "STATE: true not in {on,off}; see settingsctl --help"},
    {{"device", "locales", "[\"fr-FR\"]"}, "separate the arguments by spaces, without brackets"},
    {{"get", "[a,b]"}, "separate the arguments by spaces, without brackets"},
    {{"get", "--value", "--json"}, "--json excludes --value; see settingsctl --help"},
    {{"list", "--value"}, "--value does not work with list"},
    {{"explain", "--value"}, "--value does not work with explain"},
    {{"device", "locale", "fr-FR", "--value"}, "--value does not work with device locale"},
    {{"replay", "f", "--value"}, "--value does not work with replay"},
    {{"replay", "f", "--speed", "0"},
     "--speed: '0' is neither max nor a number from 0.001 to 1000000; see settingsctl --help"},
    {{"set", "k", "\xff"}, "an argument is not valid UTF-8"},
    {{"get", "--timeout", "0"},
     "--timeout: '0' is not a number of seconds from 0.001 to 86400; see settingsctl --help"},
    {{"get", "--timeout", "nan"},
     "--timeout: 'nan' is not a number of seconds from 0.001 to 86400; see settingsctl --help"},
    {{"get", "--timeout=-5"}, "--timeout: '-5' is not a number of seconds from 0.001 to 86400; see settingsctl --help"},
    {{"get", "--timeout", "soon"},
     "--timeout: 'soon' is not a number of seconds from 0.001 to 86400; see settingsctl --help"},
    {{"get", "--socket"}, "--socket: 1 required PATH missing; see settingsctl --help"},
    {{"get", "--socket", ""}, "the socket path is empty or too long: ''"},
};

}  // namespace

TEST(SettingsCtlCommandLine, ReportsMisuseAndDoesNothing) {
    for (const auto& [arguments, message] : misuses) {
        const Finished end = runProgram(arguments);
        EXPECT_EQ(end.errors, "settingsctl: " + message + "\n");
        EXPECT_EQ(end.output, "");
        EXPECT_EQ(end.status, 2) << message;
    }
}

TEST(SettingsCtlCommandLine, ShowsExamplesInTheHelpOfEveryVerb) {
    std::vector<std::vector<std::string>> verbs;
    for (const auto& verb : verbsOf({})) {
        verbs.push_back({verb});
    }
    for (const auto& verb : verbsOf({"device"})) {
        verbs.push_back({"device", verb});
    }
    for (auto words : verbs) {
        const std::string name = words.size() == 1 ? words[0] : words[0] + " " + words[1];
        words.emplace_back("--help");
        const Finished end = runProgram(words);
        EXPECT_EQ(end.status, 0) << name;
        EXPECT_EQ(end.errors, "") << name;
        EXPECT_NE(end.output.find("Usage: settingsctl " + name + " [OPTIONS]"), std::string::npos) << end.output;
        EXPECT_NE(end.output.find("\nExamples:\n  settingsctl " + name), std::string::npos) << end.output;
    }
    EXPECT_GE(verbs.size(), 17U);
}

TEST(SettingsCtlCommandLine, ShowsVerbsOptionsAndExitStatusesInTheHelp) {
    const Finished end = runProgram({"--help"});
    EXPECT_EQ(end.status, 0);
    for (const auto& verb : verbsOf({})) {
        EXPECT_NE(end.output.find("\n  " + verb + " "), std::string::npos) << verb;
    }
    for (const std::string option :
         {"--socket", "--device-socket", "--json", "--value", "--quiet", "--timeout", "--version"}) {
        EXPECT_NE(end.output.find("\n  " + option), std::string::npos) << option;
    }
    EXPECT_NE(end.output.find("Exit status: 0 done, 1 refused, no such value or the result cannot be written, 2 wrong "
                              "usage, 3 the host cannot be\nreached."),
              std::string::npos);
}

TEST(SettingsCtlCommandLine, PrintsTheVersion) {
    const Finished end = runProgram({"--version"});
    EXPECT_EQ(end.output, std::string(SettingsCtl::versionText()) + "\n");
    EXPECT_EQ(end.output.rfind("settingsctl " SETTINGS_HANDLER_VERSION " (", 0), 0U) << end.output;
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.status, 0);
}

TEST(SettingsCtlCommandLine, LooksForTheHostInTheRuntimeFolder) {
    const Finished end = runProgram({"--help"}, {{"XDG_RUNTIME_DIR", "/run/user/1"}});
    EXPECT_NE(end.output.find(" default: /run/user/1/settings-host/settings.sock, then "
                              "/run/settings-host/settings.sock\n"),
              std::string::npos)
        << end.output;
}

TEST(SettingsCtlCommandLine, LooksForTheHostInTheUsersTemporaryFolderWithoutARuntimeFolder) {
    const std::string folder = "/tmp/settings-host-" + std::to_string(::geteuid());
    const std::string program = SETTINGSCTL_PROGRAM;
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"env", "-u", "XDG_RUNTIME_DIR", program, "--help"},
          std::vector<std::string>{"env", "XDG_RUNTIME_DIR=", program, "--help"},
          std::vector<std::string>{"env", "XDG_RUNTIME_DIR=run/user", program, "--help"}}) {
        const Finished end = TestSupport::run(command);
        EXPECT_NE(end.output.find(" default: " + folder + "/settings.sock, then "), std::string::npos) << end.output;
    }
}
