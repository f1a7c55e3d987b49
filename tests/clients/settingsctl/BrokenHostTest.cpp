#include <gtest/gtest.h>

#include "FakeHost.h"
#include "support/ProcessUsage.h"
#include "support/Sanitizers.h"

using namespace SettingsCtlTests;

namespace {

struct Verb {
    const char* name;
    std::vector<std::string> arguments;
    bool atDevice = false;

    friend void PrintTo(const Verb& verb, std::ostream* out) { *out << verb.name; }
};

/// Every verb against a host that breaks the protocol.
class SettingsCtlWithABrokenHost : public testing::TestWithParam<Verb> {
protected:
    TestSupport::ChildProcess start(const std::string& timeout = "20") const {
        std::vector<std::string> arguments = GetParam().arguments;
        arguments.insert(arguments.begin(), {"--timeout", timeout});
        return host.start(std::move(arguments));
    }
    Peer accept() const { return GetParam().atDevice ? host.acceptAtDevice() : host.accept(); }
    std::string path() const { return GetParam().atDevice ? host.devicePath() : host.settingsPath(); }

    const FakeHost host;
};

constexpr const char* noObject = "settingsctl: unexpected response: not a settings-host (not a JSON object)\n";

}  // namespace

TEST_P(SettingsCtlWithABrokenHost, ReportsThatNoHostListens) {
    std::vector<std::string> arguments = GetParam().arguments;
    const std::string missing = path() + ".missing";
    arguments.insert(arguments.begin(), {GetParam().atDevice ? "--device-socket" : "--socket", missing});
    auto program = host.start(std::move(arguments));
    expectEnd(program, 3, "",
              "settingsctl: cannot reach the host at " + missing +
                  ": No such file or directory (is settings-host running?)\n");
}

TEST_P(SettingsCtlWithABrokenHost, ReportsAConnectionClosedAtOnce) {
    auto program = start();
    accept().close();
    expectEnd(program, 3, "", "settingsctl: the host at " + path() + " closed the connection\n");
}

TEST_P(SettingsCtlWithABrokenHost, ReportsTooManyClients) {
    auto program = start();
    Peer client = accept();
    client.sendLine(R"({"error":{"code":"too-many-clients","message":"the host has reached its limit of clients"}})");
    client.close();
    expectEnd(program, 3, "", "settingsctl: the host has reached its limit of clients; try again later\n");
}

TEST_P(SettingsCtlWithABrokenHost, ReportsAConnectionClosedWithinAReply) {
    auto program = start();
    Peer client = accept();
    client.receiveLine();
    client.send(R"({"type":7,"messageId":")" + messageId(program, 1) + R"(","payload":{"settings":{"k":"v)");
    client.close();
    expectEnd(program, 3, "", "settingsctl: the host at " + path() + " closed the connection\n");
}

TEST_P(SettingsCtlWithABrokenHost, ReportsAMissingReply) {
    auto program = start("0.05");
    const Peer client = accept();
    expectEnd(program, 3, "", "settingsctl: the host at " + path() + " does not reply\n");
}

TEST_P(SettingsCtlWithABrokenHost, ReportsAResponseThatIsNotAJsonObject) {
    auto program = start();
    Peer client = accept();
    client.sendLine("HTTP/1.1 400 Bad Request\r");
    expectEnd(program, 3, "", noObject);
}

INSTANTIATE_TEST_SUITE_P(Verb, SettingsCtlWithABrokenHost,
                         testing::Values(Verb{"Get", {"get"}}, Verb{"Set", {"set", "--any-key", "k", "v"}},
                                         Verb{"Watch", {"watch"}}, Verb{"Selected", {"selected"}},
                                         Verb{"OpenSettings", {"open-settings"}}, Verb{"LogOut", {"logout"}},
                                         Verb{"Page", {"page"}}, Verb{"Backup", {"backup"}}, Verb{"Dump", {"dump"}},
                                         Verb{"History", {"history"}}, Verb{"Undo", {"undo", "deviceName"}},
                                         Verb{"Reset", {"reset", "deviceName"}}, Verb{"Explain", {"explain"}},
                                         Verb{"DeviceShow", {"device", "show"}, true},
                                         Verb{"DeviceFaults", {"device", "faults"}, true},
                                         Verb{"DeviceLocale", {"device", "locale", "fr-FR"}, true}),
                         [](const auto& suite) { return std::string(suite.param.name); });

TEST(SettingsCtlReplies, MustBeCompleteJsonObjectsInUtf8) {
    for (const std::string& text : {std::string("[1]"), std::string(), std::string("{\"k\":\"\xff\"}"),
                                    std::string("{}\0", 3), std::string(100000, '[')}) {
        const FakeHost host;
        auto program = host.start({"get"});
        Peer client = host.accept();
        client.sendLine(text);
        expectEnd(program, 3, "", noObject);
    }
}

TEST(SettingsCtlReplies, WithoutANewlineTakeOneMebibyteAtMost) {
    if (TestSupport::sanitized) {
        GTEST_SKIP() << "the sanitizer adds memory";
    }
    const FakeHost host;
    auto program = host.start({"--timeout", "20", "get"});
    Peer client = host.accept();
    client.receiveLine();
    // Memory that the first byte takes does not depend on the length of the line.
    client.send("a");
    client.waitUntilRead();
    const std::size_t before = TestSupport::memoryOf(program.pid()).anonymous;
    client.send(std::string(1024UL * 1024 - 2, 'a'));
    client.waitUntilRead();
    constexpr std::size_t page = 4096;
    EXPECT_LE(TestSupport::memoryOf(program.pid()).anonymous - before, 1024UL * 1024 + 16 * page);
    client.send("aa");
    expectEnd(program, 3, "", "settingsctl: the host at " + host.settingsPath() + " sent a line longer than 1 MiB\n");
}

TEST(SettingsCtlTimeout, IsNotExtendedByOtherFrames) {
    const FakeHost host;
    auto program = host.start({"--timeout", "0.1", "get"});
    const Peer client = host.accept();
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::waitTimeout;
    while (!program.wait(std::chrono::milliseconds(5))) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "every event restarted the timeout";
        client.sendLine(event("k", "a", "b"));
    }
    expectEnd(program, 3, "", "settingsctl: the host at " + host.settingsPath() + " does not reply\n");
}

TEST(SettingsCtlReplies, MustHaveTheRequestedMembers) {
    for (const std::string payload :
         {"null", "{}", R"({"settings":[]})", R"({"settings":null})", R"({"settings":{"k":true}})"}) {
        const FakeHost host;
        auto program = host.start({"get"});
        Peer client = host.accept();
        client.sendLine(R"({"type":7,"messageId":")" + messageId(program, 1) + R"(","payload":)" + payload + "}");
        expectEnd(program, 3, "", "settingsctl: unexpected response: not a settings-host (malformed frame)\n");
    }
    for (const std::string payload : {"null", "{}", R"({"isOrliaSelectedAsVA":"true"})"}) {
        const FakeHost host;
        auto program = host.start({"selected"});
        Peer client = host.accept();
        client.sendLine(R"({"type":18,"messageId":")" + messageId(program, 1) + R"(","payload":)" + payload + "}");
        expectEnd(program, 3, "", "settingsctl: unexpected response: not a settings-host (malformed frame)\n");
    }
}
