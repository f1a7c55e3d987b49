#include <gtest/gtest.h>
#include <sys/stat.h>

#include "FakeHost.h"

using namespace SettingsCtlTests;

namespace {

using Words = std::vector<std::string>;

/// Runs a verb whose one request is `request` and which gets `reply`, the objects of its name. An empty reply: a
/// refusal.
TestSupport::Finished run(const Words& arguments, const std::string& name, const std::string& request,
                          const std::string& reply) {
    const FakeHost host;
    auto program = host.start(arguments);
    Peer client = host.accept();
    greet(client, program);
    EXPECT_EQ(client.receiveLine(), queryFrame(program, 1, name, request));
    client.sendLine(reply.empty() ? R"({"error":{"code":"not-stored","message":"the disk is full"}})"
                                  : queryFrame(program, 1, name, reply));
    EXPECT_TRUE(client.clientCloses());
    return finish(program);
}

void expectRun(const TestSupport::Finished& end, int status, const std::string& output,
               const std::string& errors = "") {
    EXPECT_EQ(end.output, output);
    EXPECT_EQ(end.errors, errors);
    EXPECT_EQ(end.status, status);
}

constexpr const char* refused = "settingsctl: the host refused the request: the disk is full (not-stored)\n";

}  // namespace

TEST(SettingsCtlPage, PrintsTheAddress) {
    const std::string reply = R"({"address":"http://127.0.0.1:8097/?key=k\u001b"})";
    expectRun(run({"page"}, "page", "{}", reply), 0, "http://127.0.0.1:8097/?key=k\\x1b\n");
    expectRun(run({"page", "--value"}, "page", "{}", reply), 0, "http://127.0.0.1:8097/?key=k\\x1b\n");
    expectRun(run({"page", "--quiet"}, "page", "{}", reply), 0, "");
    expectRun(run({"page", "--json"}, "page", "{}", reply), 0,
              "{\"page\":{\"address\":\"http://127.0.0.1:8097/?key=k\\u001B\"}}\n");
}

TEST(SettingsCtlPage, ReplacesTheKeyAndReportsFailure) {
    const Words arguments{"page", "--new-key"};
    const std::string request = R"({"newKey":true})";
    expectRun(run(arguments, "page", request, R"({"address":"http://127.0.0.1:8097/?key=n"})"), 0,
              "http://127.0.0.1:8097/?key=n\n");
    expectRun(run(arguments, "page", request, ""), 1, "", refused);
}

TEST(SettingsCtlPage, ReportsAHostWithoutPages) {
    expectRun(run({"page"}, "page", "{}", "{}"), 1, "", "settingsctl: the host serves no pages\n");
}

TEST(SettingsCtlBackup, PrintsTheFile) {
    const std::string reply = R"({"file":"/var/lib/settings.db.backup.1\n"})";
    expectRun(run({"backup"}, "backup", "{}", reply), 0, "/var/lib/settings.db.backup.1\\n\n");
    expectRun(run({"backup", "--json"}, "backup", "{}", reply), 0,
              "{\"backup\":{\"file\":\"/var/lib/settings.db.backup.1\\n\"}}\n");
    expectRun(run({"backup", "--quiet"}, "backup", "{}", reply), 0, "");
}

TEST(SettingsCtlBackup, ReportsFailure) {
    expectRun(run({"backup"}, "backup", "{}", ""), 1, "", refused);
    expectRun(run({"backup"}, "backup", "{}", "{}"), 3, "",
              "settingsctl: unexpected response: not a settings-host (malformed frame)\n");
}

namespace {

constexpr const char* healthy =
    R"({"health":{"status":"ok","version":"1","uptimeSeconds":1,"storage":{"writable":true,"keys":3,"failures":0}},)"
    R"("versions":{"host":")" SETTINGS_HANDLER_VERSION
    R"(","wire":"1.1.0"},"disk":{"free":104857600,"total":209715200},"newest":{},"now":1766000000000})";

class SettingsCtlDoctor : public testing::Test {
protected:
    SettingsCtlDoctor() {
        ::setenv("TZ", "UTC", 1);
        ::chmod(host.settingsPath().c_str(), 0600);
        ::chmod(host.devicePath().c_str(), 0600);
        ::chmod(folder().c_str(), 0700);
    }

    std::string folder() const { return host.settingsPath().substr(0, host.settingsPath().rfind('/')); }

    TestSupport::Finished run(Words options, const std::string& status = healthy,
                              const std::string& pages = withPages) {
        options.insert(options.begin(), "doctor");
        auto program = host.start(options);
        Peer client = host.accept();
        greet(client, program);
        EXPECT_EQ(client.receiveLine(), queryFrame(program, 1, "status"));
        client.sendLine(queryFrame(program, 1, "status", status));
        EXPECT_EQ(client.receiveLine(), queryFrame(program, 2, "page"));
        client.sendLine(queryFrame(program, 2, "page", pages));
        EXPECT_TRUE(client.clientCloses());
        return finish(program);
    }

    std::string socketLines() const {
        return "ok    socket: " + host.settingsPath() + " has mode 0600\nok    folder: " + folder() +
               " has mode 0700\nok    device socket: " + host.devicePath() + " has mode 0600\n" + bridgeLines;
    }

    static constexpr const char* bridgeLines =
        "ok    settings-dbus: not installed\nok    settings-mqtt: not installed\n";
    static constexpr const char* withPages = R"({"address":"http://127.0.0.1:8097/?key=k"})";
    const FakeHost host;
};

}  // namespace

TEST_F(SettingsCtlDoctor, FindsNothingWrong) {
    expectRun(run({}), 0,
              "ok    host: serving at " + host.settingsPath() +
                  "\n"
                  "ok    versions: host " SETTINGS_HANDLER_VERSION
                  ", wire 1.1.0\n"
                  "ok    storage: values stored: 3, operations failed since the start: 0\n"
                  "ok    disk: 100 MiB of 200 MiB free\n"
                  "ok    clock: the host's clock reads 2025-12-17 19:33:20\n"
                  "ok    pages: http://127.0.0.1:8097/\n" +
                  socketLines());
}

TEST_F(SettingsCtlDoctor, SaysWhatToDoAndExitsWithOne) {
    ::chmod(host.settingsPath().c_str(), 0666);
    ::chmod(host.devicePath().c_str(), 0606);
    ::chmod(folder().c_str(), 0777);
    const std::string status = R"({"health":{"status":"degraded","storage":{"lastFailure":"disk full"}},)"
                               R"("versions":{"host":"0.9.0","wire":"1.1.0"},"disk":{"free":0,"total":1048576},)"
                               R"("newest":{"timezone":1766000001000},"now":1766000000000})";
    expectRun(
        run({}, status, "{}"), 1,
        "ok    host: serving at " + host.settingsPath() +
            "\n"
            "wrong versions: host 0.9.0, wire 1.1.0; settingsctl " SETTINGS_HANDLER_VERSION
            ", wire 1.1.0: restart the host after an update, or install both in the same version\n"
            "wrong storage: changes do not reach the disk (disk full): see the host's log, and check the disk\n"
            "wrong disk: 0 MiB of 1 MiB free: free 16 MiB, or changes will be refused\n"
            "wrong clock: the host's clock reads 2025-12-17 19:33:20, but 'timezone' has a time stamp in the future "
            "(2025-12-17 "
            "19:33:21), so changes of it are refused until then: set the clock, or use 'settingsctl set --force'\n"
            "wrong pages: the host serves none: start it without --no-web, and with --pages DIR\n"
            "wrong socket: " +
            host.settingsPath() + " has mode 0666, so every user can connect: run 'chmod o= " + host.settingsPath() +
            "'\nwrong folder: " + folder() + " has mode 0777, so others can replace the socket: run 'chmod go-w " +
            folder() + "'\nwrong device socket: " + host.devicePath() +
            " has mode 0606, so every user can connect: run 'chmod o= " + host.devicePath() + "'\n" + bridgeLines);
}

TEST_F(SettingsCtlDoctor, PrintsOneObjectPerLineAsJson) {
    const std::string output = run({"--json"}).output;
    EXPECT_EQ(output.substr(0, output.find('\n')),
              R"({"check":"host","ok":true,"text":"serving at )" + host.settingsPath() + "\"}");
}

TEST_F(SettingsCtlDoctor, OnlySetsTheExitStatusWhenQuiet) {
    expectRun(run({"--quiet"}), 0, "");
    expectRun(run({"--quiet"}, healthy, "{}"), 1, "");
}

TEST_F(SettingsCtlDoctor, ReportsAHostWithoutAnswers) {
    auto program = host.start({"doctor"});
    Peer client = host.accept();
    client.receiveLine();
    client.sendLine(R"({"error":{"code":"unknown-type","message":"the frame has no type"}})");
    expectRun(finish(program), 1,
              "ok    host: serving at " + host.settingsPath() + "\nwrong versions: the host at " + host.settingsPath() +
                  " is of version 1.0 and has no administration: restart it after an update\n" + socketLines());
}

TEST_F(SettingsCtlDoctor, ExitsWithOneWithoutAHost) {
    const std::string missing = folder() + "/missing.sock";
    auto program = host.start({"doctor", "--socket", missing});
    expectRun(finish(program), 1,
              "wrong host: cannot reach the host at " + missing +
                  ": No such file or directory (is settings-host running?): start it, or name its socket with "
                  "--socket\nok    device socket: " +
                  host.devicePath() + " has mode 0600\n" + bridgeLines);
}

TEST_F(SettingsCtlDoctor, ReportsAnotherProgram) {
    auto program = host.start({"doctor"});
    host.accept().sendLine("HTTP/1.1 400 Bad Request\r");
    const TestSupport::Finished end = finish(program);
    EXPECT_EQ(end.output.rfind("wrong host: unexpected response: not a settings-host (not a JSON object): name the "
                               "host's socket with --socket\n",
                               0),
              0U)
        << end.output;
    EXPECT_EQ(end.status, 1);
}

TEST_F(SettingsCtlDoctor, ReportsAHostThatRefusesTheClient) {
    auto program = host.start({"doctor"});
    Peer client = host.accept();
    client.sendLine(refusal("too-many-clients", "no"));
    expectRun(finish(program), 1,
              "wrong host: the host has reached its limit of clients; try again later: see its log\n" + socketLines());
}

TEST_F(SettingsCtlDoctor, ReportsAHostThatRefusesARequest) {
    auto program = host.start({"doctor"});
    Peer client = host.accept();
    greet(client, program);
    client.receiveLine();
    client.sendLine(refusal("busy", "too much is queued"));
    expectRun(finish(program), 1,
              "ok    host: serving at " + host.settingsPath() +
                  "\nwrong host: the host refused the request: too much is queued (busy): see its log\n" +
                  socketLines());
}
