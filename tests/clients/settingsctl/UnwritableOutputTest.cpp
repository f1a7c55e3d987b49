#include <gtest/gtest.h>
#include <sys/stat.h>

#include "FakeHost.h"
#include "RunningHost.h"

using namespace SettingsCtlTests;

namespace {

using Words = std::vector<std::string>;

/// How a shell redirects standard output, and the error of writing to it.
struct Output {
    const char* name;
    std::string redirection;
    std::string reason;

    friend void PrintTo(const Output& output, std::ostream* out) { *out << output.name; }
};

/// The program, started by a shell with standard streams as `redirection` says.
Words command(const Words& arguments, const std::string& redirection) {
    Words words{"sh", "-c", R"(exec "$0" "$@" )" + redirection, SETTINGSCTL_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

/// Standard output that cannot be written.
class SettingsCtlWithoutOutput : public testing::TestWithParam<Output> {
protected:
    SettingsCtlWithoutOutput() { EXPECT_EQ(::mkfifo(pipe.c_str(), 0600), 0); }

    TestSupport::Finished run(const RunningHost& host, const Words& arguments) const {
        return TestSupport::run(command(arguments, GetParam().redirection),
                                {{"XDG_RUNTIME_DIR", host.runtimeFolder()}, {"PIPE", pipe}});
    }

    static std::string message() { return "settingsctl: cannot write to standard output: " + GetParam().reason + "\n"; }

    const TestSupport::TemporaryDirectory folder;
    const std::string pipe = folder / "pipe";
};

}  // namespace

TEST_P(SettingsCtlWithoutOutput, ReportsTheErrorForEveryVerb) {
    const RunningHost host;
    for (const Words& arguments : {Words{"--help"},
                                   {"get", "--help"},
                                   {"--version"},
                                   {"get"},
                                   {"get", "--value", "deviceName"},
                                   {"get", "--json"},
                                   {"list"},
                                   {"list", "--json"},
                                   {"selected"},
                                   {"set", "timezone", "America/Vancouver"},
                                   {"logout", "--json"},
                                   {"device", "show"},
                                   {"device", "captions", "on", "--json"},
                                   {"device", "setting", "timezone", "America/Vancouver"}}) {
        const TestSupport::Finished end = run(host, arguments);
        EXPECT_EQ(end.errors, message()) << testing::PrintToString(arguments);
        EXPECT_EQ(end.status, 1) << testing::PrintToString(arguments);
    }
}

TEST_P(SettingsCtlWithoutOutput, MakesTheChangeAllTheSame) {
    const RunningHost host;
    const TestSupport::Finished end = run(host, {"set", "deviceName", "Den"});
    EXPECT_EQ(end.errors, message());
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(host.run({"get", "deviceName"}).output, "deviceName=Den\n");
}

TEST_P(SettingsCtlWithoutOutput, SucceedsWhenNothingIsPrinted) {
    const RunningHost host;
    for (const Words& arguments : {Words{"get", "--quiet"},
                                   {"set", "--quiet", "deviceName", "Den"},
                                   {"open-settings"},
                                   {"logout"},
                                   {"device", "captions", "on"},
                                   {"device", "setting", "deviceName", "Attic"}}) {
        const TestSupport::Finished end = run(host, arguments);
        EXPECT_EQ(end.errors, "") << testing::PrintToString(arguments);
        EXPECT_EQ(end.status, 0) << testing::PrintToString(arguments);
    }
    EXPECT_EQ(host.run({"get", "deviceName"}).output, "deviceName=Attic\n");
}

TEST_P(SettingsCtlWithoutOutput, ReportsTheFirstError) {
    const RunningHost host;
    const TestSupport::Finished unknown = run(host, {"put"});
    EXPECT_EQ(unknown.errors, "settingsctl: The following argument was not expected: put; see settingsctl --help\n");
    EXPECT_EQ(unknown.status, 2);
    const TestSupport::Finished refused = run(host, {"set", "captionsEnabled", "true"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.errors.find("was refused"), std::string::npos) << refused.errors;
}

INSTANTIATE_TEST_SUITE_P(That, SettingsCtlWithoutOutput,
                         testing::Values(Output{"IsClosed", ">&-", "Bad file descriptor"},
                                         Output{"IsFull", "> /dev/full", "No space left on device"},
                                         Output{"IsABrokenPipe", "3<> \"$PIPE\" > \"$PIPE\" 3>&-", "Broken pipe"}),
                         [](const auto& suite) { return std::string(suite.param.name); });

TEST(SettingsCtlClosedStreams, AreNotTakenForTheConnection) {
    const std::vector<std::pair<std::string, int>> endings{
        {"<&-", 0}, {">&-", 1}, {"2>&-", 0}, {"<&- >&-", 1}, {"<&- 2>&-", 0}, {">&- 2>&-", 1}, {"<&- >&- 2>&-", 1}};
    for (const auto& [closed, status] : endings) {
        const FakeHost host;
        TestSupport::ChildProcess program(
            command({"--socket", host.settingsPath(), "get", "--value", "deviceName"}, closed));
        Peer client = host.accept();
        greet(client, program);
        EXPECT_EQ(client.receiveLine(), getRequest(program, 1, R"(["deviceName"])"));
        client.sendLine(getReply(program, 1, R"({"deviceName":"{\"type\":22}"})"));
        EXPECT_TRUE(client.clientCloses()) << closed << ": what is printed reaches the host";
        EXPECT_EQ(program.wait(), status) << closed;
    }
    const FakeHost host;
    TestSupport::ChildProcess program(command({"--socket", host.settingsPath(), "get", "timezone"}, "<&- >&- 2>&-"));
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(client.receiveLine(), getRequest(program, 1, R"(["timezone"])"));
    client.sendLine(getReply(program, 1, "{}"));
    EXPECT_TRUE(client.clientCloses()) << "a reason reaches the host";
    EXPECT_EQ(program.wait(), 1);
}

TEST(SettingsCtlClosedStreams, DoNotLetAValueBeARequest) {
    const RunningHost host;
    ASSERT_EQ(host.run({"set", "deviceName", R"({"type":22})"}).status, 0);
    const TestSupport::Finished end =
        TestSupport::run(command({"get", "--value", "deviceName"}, ">&-"), {{"XDG_RUNTIME_DIR", host.runtimeFolder()}});
    EXPECT_EQ(host.run({"get", "deviceName"}).output, "deviceName={\"type\":22}\n") << "the user was logged out";
    EXPECT_EQ(end.errors, "settingsctl: cannot write to standard output: Bad file descriptor\n");
    EXPECT_EQ(end.status, 1);
}

TEST(SettingsCtlClosedStreams, KeepTheExitStatusWithoutStandardError) {
    const RunningHost host;
    for (const std::string redirection : {"2>&-", "2> /dev/full"}) {
        const auto run = [&](const Words& arguments) {
            return TestSupport::run(command(arguments, redirection), {{"XDG_RUNTIME_DIR", host.runtimeFolder()}});
        };
        EXPECT_EQ(run({"get", "deviceName"}).output, "deviceName=TV\n");
        EXPECT_EQ(run({"get", "deviceName"}).status, 0);
        EXPECT_EQ(run({"get", "tovanEntitlementStatus"}).status, 1);
        EXPECT_EQ(run({"put"}).status, 2);
        EXPECT_EQ(run({"get", "--socket", "/nowhere"}).status, 3);
    }
}

TEST(SettingsCtlClosedStreams, EndTheWatchAtOnce) {
    const FakeHost host;
    TestSupport::ChildProcess program(command({"--socket", host.settingsPath(), "watch"}, ">&-"));
    expectEnd(program, 1, "", "settingsctl: cannot write to standard output: Bad file descriptor\n");
}

TEST(SettingsCtlClosedStreams, EndTheWatchWithTheFirstChangeOnAFullDisk) {
    const FakeHost host;
    TestSupport::ChildProcess program(command({"--socket", host.settingsPath(), "watch"}, "> /dev/full"));
    Peer client = host.accept();
    client.sendLine(event("k", "a", "b"));
    EXPECT_TRUE(!client.receiveLine().empty() && client.clientCloses());
    expectEnd(program, 1, "", "settingsctl: cannot write to standard output: No space left on device\n");
}
