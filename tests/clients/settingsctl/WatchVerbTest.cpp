#include <csignal>

#include <gtest/gtest.h>

#include "FakeHost.h"

using namespace SettingsCtlTests;

namespace {

/// A watching program and the host that serves it.
class SettingsCtlWatch : public testing::Test {
protected:
    std::string readyLine() const { return "settingsctl: watching " + host.settingsPath(); }

    /// The test reads what the program prints while it runs.
    static void expectLine(TestSupport::ChildProcess& program, const std::string& line) {
        EXPECT_EQ(program.output().readLine(), line);
    }

    /// A hello of the program, or the host's answer to it.
    static std::string helloFrame(const TestSupport::ChildProcess& program, const std::string& body) {
        return R"({"messageId":"settingsctl-)" + std::to_string(program.pid()) + R"(-hello","hello":)" + body + "}";
    }

    static void expectInterruption(TestSupport::ChildProcess& program, int signal) {
        program.sendSignal(signal);
        expectEnd(program, 0, "", "");
    }

    const FakeHost host;
};

}  // namespace

TEST_F(SettingsCtlWatch, PrintsEachChangeAtOnce) {
    auto program = host.start({"watch"});
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(program.errors().readLine(), readyLine());
    client.sendLine(event("deviceName", "TV", "Living room"));
    expectLine(program, "deviceName: 'TV' -> 'Living room'");
    client.sendLine(event("deviceName", "Living room", "a\\u001b\xc2\x9b", 2));
    expectLine(program, "deviceName: 'Living room' -> 'a\\x1b\\u009b'");
    expectInterruption(program, SIGINT);
}

TEST_F(SettingsCtlWatch, PrintsTheKeysOfANotice) {
    auto program = host.start({"watch"});
    Peer client = host.accept();
    client.sendLine(R"({"notice":{"reread":["captionsEnabled","time\u0007zone"]}})");
    expectLine(program, "reread: captionsEnabled, time\\x07zone");
    client.sendLine(R"({"notice":{"reread":["captionsEnabled"]}})");
    expectLine(program, "reread: captionsEnabled");
}

TEST_F(SettingsCtlWatch, PrintsNewValuesAlone) {
    auto program = host.start({"watch", "--value"});
    Peer client = host.accept();
    greet(client, program);
    client.sendLine(R"({"notice":{"reread":["captionsEnabled"]}})");
    client.sendLine(event("deviceName", "TV", "Living room"));
    expectLine(program, "Living room");
}

TEST_F(SettingsCtlWatch, PrintsFramesUnchangedAsJson) {
    auto program = host.start({"watch", "--json"});
    Peer client = host.accept();
    const std::string change = R"({ "type": 25, "timestamp": 1.7e12, "payload": {"settingDBId":"k\u001b","from":")"
                               "\x7f\xc2\x9b"
                               R"(","to":""}, "later": [1]})";
    client.sendLine(change);
    expectLine(program, change);
    const std::string notice = R"({"notice": {"reread":["captionsEnabled"]}})";
    client.sendLine(notice);
    expectLine(program, notice);
}

TEST_F(SettingsCtlWatch, PrintsEventsBeforeTheFirstReply) {
    auto program = host.start({"watch"});
    Peer client = host.accept();
    client.sendLine(event("k", "a", "b"));
    expectLine(program, "k: 'a' -> 'b'");
    greet(client, program);
    EXPECT_EQ(program.errors().readLine(), readyLine());
}

TEST_F(SettingsCtlWatch, SkipsOtherFrames) {
    auto program = host.start({"watch", "--json"});
    Peer client = host.accept();
    client.sendLine(R"({"type":99,"payload":{}})");
    client.sendLine("{}");
    client.sendLine(event("k", "a", "b"));
    expectLine(program, event("k", "a", "b"));
}

TEST_F(SettingsCtlWatch, PrintsNothingWhenQuiet) {
    auto program = host.start({"watch", "--quiet", "--no-reconnect"});
    Peer client = host.accept();
    greet(client, program);
    client.sendLine(event("k", "a", "b"));
    client.close();
    expectEnd(program, 3, "", "settingsctl: the host at " + host.settingsPath() + " closed the connection\n");
}

TEST_F(SettingsCtlWatch, EndsWithStatus0OnSigintAndSigterm) {
    for (const int signal : {SIGINT, SIGTERM}) {
        auto program = host.start({"watch"});
        Peer client = host.accept();
        greet(client, program);
        EXPECT_EQ(program.errors().readLine(), readyLine());
        expectInterruption(program, signal);
    }
}

TEST_F(SettingsCtlWatch, CanBeInterruptedBeforeTheFirstReply) {
    auto program = host.start({"watch", "--timeout", "60"});
    Peer client = host.accept();
    client.receiveLine();
    expectInterruption(program, SIGINT);
}

TEST_F(SettingsCtlWatch, FailsWhenItsOutputIsAClosedPipe) {
    for (const bool withChange : {false, true}) {
        auto program = host.start({"watch"});
        Peer client = host.accept();
        greet(client, program);
        EXPECT_EQ(program.errors().readLine(), readyLine());
        program.closeOutput();
        if (withChange) {
            client.sendLine(event("k", "a", "b"));
        }
        EXPECT_TRUE(client.clientCloses());
        EXPECT_EQ(program.errors().readAll(), "settingsctl: cannot write to standard output: Broken pipe\n");
        EXPECT_EQ(program.wait(), 1);
    }
}

TEST_F(SettingsCtlWatch, FailsInAPipelineWhoseReaderEnds) {
    TestSupport::ChildProcess program({"bash", "-c", R"(set -o pipefail; "$0" --socket "$1" watch | head -n 1)",
                                       SETTINGSCTL_PROGRAM, host.settingsPath()});
    Peer client = host.accept();
    // The process is the shell's.
    const std::string hello = client.receiveLine();
    client.sendLine(hello.substr(0, hello.find("{\"client\"")) + R"({"version":"1.1.0","run":"run","sequence":0}})");
    EXPECT_EQ(program.errors().readLine(), readyLine());
    client.sendLine(event("k", "a", "b"));
    EXPECT_TRUE(client.clientCloses());
    expectEnd(program, 1, "k: 'a' -> 'b'\n", "settingsctl: cannot write to standard output: Broken pipe\n");
}

TEST_F(SettingsCtlWatch, NeedsNoOutputWhenQuiet) {
    auto program = host.start({"watch", "--quiet", "--no-reconnect"});
    Peer client = host.accept();
    program.closeOutput();
    greet(client, program);
    client.sendLine(event("k", "a", "b"));
    client.close();
    EXPECT_EQ(program.errors().readAll(),
              "settingsctl: the host at " + host.settingsPath() + " closed the connection\n");
    EXPECT_EQ(program.wait(), 3);
}

TEST_F(SettingsCtlWatch, ConnectsAgainAndGoesOnWithoutAGap) {
    auto program = host.start({"watch"});
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(program.errors().readLine(), readyLine());
    client.sendLine(event("k", "a", "b"));
    expectLine(program, "k: 'a' -> 'b'");
    client.close();
    EXPECT_EQ(program.errors().readLine(),
              "settingsctl: the host at " + host.settingsPath() + " closed the connection; reconnecting");
    Peer second = host.accept();
    EXPECT_EQ(second.receiveLine(),
              helloFrame(program, R"({"client":"settingsctl","resume":{"run":"run","sequence":1}})"));
    second.sendLine(event("k", "b", "c", 2));
    second.sendLine(
        helloFrame(program, R"({"version":"1.1.0","run":"run","sequence":2,"missed":false,"reread":["timezone"]})"));
    second.sendLine(event("k", "c", "d", 3));
    expectLine(program, "k: 'b' -> 'c'");
    expectLine(program, "reread: timezone");
    expectLine(program, "k: 'c' -> 'd'");
    EXPECT_EQ(program.errors().readLine(), readyLine());
    expectInterruption(program, SIGINT);
}

TEST_F(SettingsCtlWatch, SaysWhenChangesWereMissed) {
    for (const bool json : {false, true}) {
        auto program =
            host.start(json ? std::vector<std::string>{"watch", "--json"} : std::vector<std::string>{"watch"});
        Peer client = host.accept();
        greet(client, program);
        EXPECT_EQ(program.errors().readLine(), readyLine());
        client.close();
        Peer second = host.accept();
        second.receiveLine();
        const std::string missed =
            helloFrame(program, R"({"version":"1.1.0","run":"another","sequence":0,"missed":true})");
        second.sendLine(missed);
        expectLine(program, json ? missed : "reread: all settings");
    }
}

TEST_F(SettingsCtlWatch, ConnectsToAHostOfVersion1) {
    auto program = host.start({"watch"});
    Peer client = host.accept();
    client.receiveLine();
    client.sendLine(refusal("unknown-type", "no such type"));
    EXPECT_EQ(program.errors().readLine(), readyLine());
    client.sendLine(event("k", "a", "b"));
    expectLine(program, "k: 'a' -> 'b'");
}

TEST_F(SettingsCtlWatch, EndsWithTheConnectionIfAskedTo) {
    auto program = host.start({"watch", "--no-reconnect"});
    Peer client = host.accept();
    greet(client, program);
    client.sendLine(event("k", "a", "b"));
    client.send(event("k", "b", "c", 2));
    client.close();
    expectEnd(program, 3, "k: 'a' -> 'b'\n",
              readyLine() + "\nsettingsctl: the host at " + host.settingsPath() + " closed the connection\n");
}

TEST_F(SettingsCtlWatch, ReportsAMissingReply) {
    auto program = host.start({"watch", "--timeout", "0.05"});
    const Peer client = host.accept();
    expectEnd(program, 3, "", "settingsctl: the host at " + host.settingsPath() + " does not reply\n");
}

TEST_F(SettingsCtlWatch, WaitsWithoutLimitAfterTheFirstReply) {
    // On a busy machine the reply may come after the timeout, which proves nothing: try a longer one.
    for (const int milliseconds : {50, 500, 5000}) {
        auto program = host.start({"watch", "--timeout", std::to_string(milliseconds / 1000.0)});
        Peer client = host.accept();
        greet(client, program);
        if (program.errors().readLine() == readyLine()) {
            EXPECT_EQ(program.wait(std::chrono::milliseconds(3 * milliseconds)), std::nullopt);
            client.sendLine(event("k", "a", "b"));
            expectLine(program, "k: 'a' -> 'b'");
            return;
        }
    }
    FAIL() << "no reply came within the timeout";
}
