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

/// The verbs with their examples' first words.
const std::vector<std::vector<std::string>> verbs{
    {"get"},
    {"set"},
    {"watch"},
    {"list"},
    {"selected"},
    {"page"},
    {"open-settings"},
    {"logout"},
    {"device"},
    {"device", "show"},
    {"device", "locale"},
    {"device", "locales"},
    {"device", "timezone"},
    {"device", "handsfree"},
    {"device", "setting"},
    {"device", "captions"},
    {"device", "do-not-disturb"},
};

struct Misuse {
    std::vector<std::string> arguments;
    std::string message;
};

const std::vector<Misuse> misuses{
    {{}, "a verb is missing, for example 'settingsctl get'; see settingsctl --help"},
    {{"device"}, "a verb is missing, for example 'settingsctl get'; see settingsctl --help"},
    {{"--json"}, "a verb is missing, for example 'settingsctl get'; see settingsctl --help"},
    {{"put"}, "The following argument was not expected: put; see settingsctl --help"},
    {{"device", "eject"}, "The following argument was not expected: eject; see settingsctl --help"},
    {{"\x1b[31m"}, "The following argument was not expected: \\x1b[31m; see settingsctl --help"},
    {{"set"}, "KEY is required; see settingsctl --help"},
    {{"set", "k"}, "VALUE is required; see settingsctl --help"},
    {{"set", "k", "v", "w"}, "The following argument was not expected: w; see settingsctl --help"},
    {{"set", "k", "--v"}, "VALUE is required; see settingsctl --help"},
    {{"list", "k"}, "The following argument was not expected: k; see settingsctl --help"},
    {{"device", "locale"}, "VALUE is required; see settingsctl --help"},
    {{"device", "locales"}, "LOCALE is required; see settingsctl --help"},
    {{"device", "captions", "true"}, "STATE: true not in {on,off}; see settingsctl --help"},
    {{"device", "locales", "[\"fr-FR\"]"}, "give the words one by one, without brackets"},
    {{"get", "[a,b]"}, "give the words one by one, without brackets"},
    {{"get", "--value", "--json"}, "--json excludes --value; see settingsctl --help"},
    {{"list", "--value"}, "--value goes with get and device show only"},
    {{"device", "locale", "fr-FR", "--value"}, "--value goes with get and device show only"},
    {{"set", "k", "\xff"}, "an argument is not valid UTF-8"},
    {{"get", "--timeout", "0"}, "--timeout: '0' is no time from 0.001 to 86400 seconds; see settingsctl --help"},
    {{"get", "--timeout", "nan"}, "--timeout: 'nan' is no time from 0.001 to 86400 seconds; see settingsctl --help"},
    {{"get", "--timeout=-5"}, "--timeout: '-5' is no time from 0.001 to 86400 seconds; see settingsctl --help"},
    {{"get", "--timeout", "soon"}, "--timeout: 'soon' is no time from 0.001 to 86400 seconds; see settingsctl --help"},
    {{"get", "--socket"}, "--socket: 1 required PATH missing; see settingsctl --help"},
    {{"get", "--socket", ""}, "the socket path is empty or too long: ''"},
};

}  // namespace

TEST(SettingsCtlCommandLine, TellsWhatIsWrongWithItAndDoesNothing) {
    for (const auto& [arguments, message] : misuses) {
        const Finished end = runProgram(arguments);
        EXPECT_EQ(end.errors, "settingsctl: " + message + "\n");
        EXPECT_EQ(end.output, "");
        EXPECT_EQ(end.status, 2) << message;
    }
}

TEST(SettingsCtlCommandLine, HelpsWithEveryVerbByExample) {
    for (const auto& verb : verbs) {
        std::vector<std::string> arguments = verb;
        std::string words = "settingsctl";
        for (const auto& word : verb) {
            words += " " + word;
        }
        arguments.emplace_back("--help");
        const Finished end = runProgram(arguments);
        EXPECT_EQ(end.status, 0) << words;
        EXPECT_EQ(end.errors, "") << words;
        EXPECT_NE(end.output.find("Usage: " + words + " [OPTIONS]"), std::string::npos) << end.output;
        EXPECT_NE(end.output.find("\nExamples:\n  " + words), std::string::npos) << end.output;
    }
}

TEST(SettingsCtlCommandLine, HelpsWithTheVerbsTheOptionsAndTheExitStatus) {
    const Finished end = runProgram({"--help"});
    EXPECT_EQ(end.status, 0);
    for (const auto& verb : verbs) {
        EXPECT_NE(end.output.find("\n  " + verb.front() + " "), std::string::npos) << verb.front();
    }
    for (const std::string option :
         {"--socket", "--device-socket", "--json", "--value", "--quiet", "--timeout", "--version"}) {
        EXPECT_NE(end.output.find("\n  " + option), std::string::npos) << option;
    }
    EXPECT_NE(end.output.find("Exit status: 0 done, 1 refused, no such value or the result cannot be written, 2 wrong "
                              "usage, 3 the host cannot be\nreached."),
              std::string::npos);
}

TEST(SettingsCtlCommandLine, TellsItsVersion) {
    const Finished end = runProgram({"--version"});
    EXPECT_EQ(end.output, std::string(SettingsCtl::versionText()) + "\n");
    EXPECT_EQ(end.output.rfind("settingsctl " SETTINGS_HANDLER_VERSION " (", 0), 0U) << end.output;
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.status, 0);
}

TEST(SettingsCtlCommandLine, LooksForTheHostInTheRuntimeFolder) {
    const Finished end = runProgram({"--help"}, {{"XDG_RUNTIME_DIR", "/run/user/1"}});
    EXPECT_NE(end.output.find(" by default /run/user/1/settings-host/settings.sock, or else "
                              "/run/settings-host/settings.sock\n"),
              std::string::npos)
        << end.output;
}

TEST(SettingsCtlCommandLine, LooksForTheHostInATemporaryFolderOfTheUserWhenThereIsNoRuntimeFolder) {
    const std::string folder = "/tmp/settings-host-" + std::to_string(::geteuid());
    const std::string program = SETTINGSCTL_PROGRAM;
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"env", "-u", "XDG_RUNTIME_DIR", program, "--help"},
          std::vector<std::string>{"env", "XDG_RUNTIME_DIR=", program, "--help"},
          std::vector<std::string>{"env", "XDG_RUNTIME_DIR=run/user", program, "--help"}}) {
        const Finished end = TestSupport::run(command);
        EXPECT_NE(end.output.find(" by default " + folder + "/settings.sock, or else "), std::string::npos)
            << end.output;
    }
}
